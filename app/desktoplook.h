// The desktop's look over the whole program: its icon theme in menus, and its
// palette, light or dark, in menus, titles and dialogs; followed as it changes.
#pragma once

#include "platform/desktopsettings.h"

#include <QPalette>
#include <QString>
#include <QStringList>

#include <optional>

// The icon theme to use: the one Qt's platform theme names (`platformTheme`,
// empty where it names none of the desktop's), else the one XSETTINGS or
// settings.ini names, each only if it is installed; failing those, the first
// complete theme installed. Where the look is dark (`dark`) its "-dark"
// companion where one is installed. Empty when no complete theme is installed: Qt's own icons are
// then all there is.
QString ChooseIconTheme(const QString &platformTheme, const platform::ToolkitSettings &xsettings,
                        const platform::ToolkitSettings &settingsIni, bool dark,
                        const QStringList &searchPaths);
// Dark or light: the portal's preference where it has one; otherwise the
// toolkit settings' (a dark preference, or a theme named "…-dark").
platform::ColourScheme ChooseColourScheme(std::optional<platform::ColourScheme> portal,
                                          const platform::ToolkitSettings &xsettings,
                                          const platform::ToolkitSettings &settingsIni);
// A dark palette keeping the accent of `light`.
QPalette DarkPalette(const QPalette &light);

// Applies the desktop's look now; when it differs from what was applied, the
// cached menus and icons are dropped and the titles redrawn.
void ApplyDesktopLook();
// Applies the look, and again whenever the desktop changes it.
void FollowDesktopLook();
void StopFollowingDesktopLook();
