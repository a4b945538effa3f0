// XSETTINGS: the settings a GTK-based desktop's settings manager publishes on
// the display (the icon theme, the toolkit theme, ...), read from the
// manager's window and followed as it changes them or as managers come and go.
#pragma once

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QVariant>

#include <cstdint>
#include <functional>

namespace platform {

// Settings by name: strings as QString, integers as int; colours are left out.
using XSettingsValues = QHash<QByteArray, QVariant>;

// Decodes the manager's _XSETTINGS_SETTINGS property. Whatever follows a
// malformed setting is dropped; what came before it is kept.
XSettingsValues ParseXSettings(const QByteArray &data);

class XSettingsWatch final : public QAbstractNativeEventFilter {
public:
    // `changed` is called after the settings change; nothing happens off X11.
    explicit XSettingsWatch(std::function<void()> changed);
    ~XSettingsWatch() override;
    XSettingsWatch(const XSettingsWatch &) = delete;
    XSettingsWatch &operator=(const XSettingsWatch &) = delete;

    const XSettingsValues &values() const { return values_; }

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

private:
    // Finds the manager and reads its settings again.
    void read();

    std::function<void()> changed_;
    std::uint32_t selection_ = 0;
    std::uint32_t owner_ = 0;
    XSettingsValues values_;
    bool filtering_ = false;
    bool readPending_ = false;
    QObject context_; // ends pending reads with the watch
};

} // namespace platform
