// The XDG settings portal's colour scheme (org.freedesktop.portal.Settings,
// org.freedesktop.appearance color-scheme): asked once without waiting, then
// followed through its SettingChanged signal.
#pragma once

#include "platform/desktopsettings.h"

#include <QDBusMessage>
#include <QObject>

#include <functional>
#include <optional>

namespace platform {

class SettingsPortal final : public QObject {
    Q_OBJECT
public:
    // `changed` is called when the answer comes and whenever the scheme changes.
    explicit SettingsPortal(std::function<void()> changed);
    // None until a portal has answered, and where there is none.
    std::optional<ColourScheme> colourScheme() const { return scheme_; }

private Q_SLOTS:
    void settingChanged(const QDBusMessage &message);

private:
    void take(const QVariant &value);

    std::function<void()> changed_;
    std::optional<ColourScheme> scheme_;
};

} // namespace platform
