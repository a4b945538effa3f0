// The desktop's look as the freedesktop sources tell it: the settings portal
// on the session bus, the XSETTINGS manager on the display, and GTK's
// settings.ini in the configuration folders, each followed as it changes.
#pragma once

#include "platform/desktopsettings.h"

#include <QFileSystemWatcher>

#include <memory>

namespace platform {

class SettingsPortal;
class XSettingsWatch;

// Reads the [Settings] group of a GTK settings.ini over `base`: what the file
// says replaces what `base` has. A missing or unreadable file changes nothing.
ToolkitSettings ReadGtkSettingsIni(const QString &path, ToolkitSettings base = {});

class XdgDesktopSettings final : public DesktopSettings {
public:
    XdgDesktopSettings();
    ~XdgDesktopSettings() override;

    ToolkitSettings xsettings() override;
    ToolkitSettings settingsIni() override;
    std::optional<ColourScheme> portalColourScheme() override;
    void setChangedHandler(std::function<void()> changed) override;

private:
    void readSettingsIni();
    void changed();

    std::function<void()> changed_;
    std::unique_ptr<XSettingsWatch> xsettings_;
    std::unique_ptr<SettingsPortal> portal_;
    QFileSystemWatcher iniWatch_;
    ToolkitSettings ini_;
    bool changePending_ = false;
};

} // namespace platform
