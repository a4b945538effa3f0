// Installed icon themes (the freedesktop icon theme layout) and the one Qt's
// platform theme names.
#pragma once

#include <QString>
#include <QStringList>

namespace platform {

// Whether `name` is a theme with an index.theme in one of `searchPaths`.
bool IsInstalledIconTheme(const QString &name, const QStringList &searchPaths);
// The first complete theme installed other than `except` (one that shows a
// folder and a plain file by itself or through the themes it inherits, hicolor
// aside): the desktops' own first (Adwaita, Breeze, elementary, ...), then the
// others by name; empty for none.
QString FirstCompleteIconTheme(const QStringList &searchPaths, const QString &except = {});

// Whether the icon theme Qt's platform theme names is the desktop's choice (a
// theme plugin, or Qt's own theme for KDE), not a fixed default of Qt's generic
// or GNOME theme. Asked first before the program names a fallback theme.
bool PlatformThemeKnowsIcons();

} // namespace platform
