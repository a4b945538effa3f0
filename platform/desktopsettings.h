// What the desktop says about its look: the icon theme and whether it prefers
// dark or light, from the XDG settings portal and the toolkit settings that
// GTK-based desktops publish (XSETTINGS, GTK's settings.ini).
#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace platform {

// The portal's numbering of org.freedesktop.appearance color-scheme.
enum class ColourScheme { NoPreference = 0, Dark = 1, Light = 2 };

// One source of toolkit settings; empty fields where it says nothing.
struct ToolkitSettings {
    QString iconTheme;              // Net/IconThemeName, gtk-icon-theme-name
    QString theme;                  // Net/ThemeName, gtk-theme-name ("Adwaita-dark")
    std::optional<bool> preferDark; // gtk-application-prefer-dark-theme
};

class DesktopSettings {
public:
    virtual ~DesktopSettings() = default;
    // The running XSETTINGS manager's settings; empty without one.
    virtual ToolkitSettings xsettings() = 0;
    // The user's GTK settings.ini (the system's fills what it leaves out).
    virtual ToolkitSettings settingsIni() = 0;
    // The settings portal's colour scheme; none while no portal has answered.
    virtual std::optional<ColourScheme> portalColourScheme() = 0;
    // Calls `changed` whenever any of the three changes. Null stops it.
    virtual void setChangedHandler(std::function<void()> changed) = 0;
};

} // namespace platform
