#include "platform/iconthemes.h"

#include <glib.h>

#include <QDir>
#include <QFile>
#include <QIcon>
#include <QSet>

namespace platform {

namespace {

// Themes that desktops ship as their own, most widely installed first.
const char *const kDesktopThemes[] = {"Adwaita", "breeze", "elementary", "Yaru",
                                      "Papirus", "Mint-Y", "Tango",      "oxygen"};

struct ThemeIndex {
    bool found = false;
    bool hidden = false;
    QStringList folders; // the theme's icon folders, in every search path that has it
    QStringList inherits;
};

QStringList KeyFileList(GKeyFile *file, const char *key) {
    QStringList list;
    gsize length = 0;
    if (gchar **items = g_key_file_get_string_list(file, "Icon Theme", key, &length, nullptr)) {
        for (gsize i = 0; i < length; ++i)
            list.append(QString::fromUtf8(items[i]).trimmed());
        g_strfreev(items);
    }
    return list;
}

ThemeIndex ReadIndex(const QString &name, const QStringList &searchPaths) {
    ThemeIndex index;
    for (const QString &base : searchPaths) {
        // Qt's resource folders are no place for installed themes.
        if (base.startsWith(u':') || name.isEmpty() || name.contains(u'/'))
            continue;
        const QString root = base + u'/' + name;
        GKeyFile *file = g_key_file_new();
        // Icon theme lists are separated by commas, not the key file's semicolons.
        g_key_file_set_list_separator(file, ',');
        if (g_key_file_load_from_file(
                file, QFile::encodeName(root + QStringLiteral("/index.theme")).constData(),
                G_KEY_FILE_NONE, nullptr)) {
            if (!index.found) {
                index.found = true;
                index.hidden = g_key_file_get_boolean(file, "Icon Theme", "Hidden", nullptr);
                index.inherits = KeyFileList(file, "Inherits");
            }
            for (const QString &folder :
                 KeyFileList(file, "Directories") + KeyFileList(file, "ScaledDirectories"))
                index.folders.append(root + u'/' + folder);
        }
        g_key_file_free(file);
    }
    return index;
}

bool HasIcon(const QStringList &folders, const QString &icon) {
    for (const QString &folder : folders)
        for (const char *suffix : {".svg", ".png", ".xpm"})
            if (QFile::exists(folder + u'/' + icon + QLatin1String(suffix)))
                return true;
    return false;
}

bool CompleteIndex(const ThemeIndex &index, const QStringList &searchPaths, QSet<QString> &seen);

// Whether the theme `name` shows a folder and a plain file by itself or
// through the themes it inherits (hicolor, every theme's last resort, aside).
bool Complete(const QString &name, const QStringList &searchPaths, QSet<QString> &seen) {
    if (name == QLatin1String("hicolor") || seen.contains(name) || seen.size() > 16)
        return false;
    seen.insert(name);
    return CompleteIndex(ReadIndex(name, searchPaths), searchPaths, seen);
}

// The same, for a theme whose index is read already.
bool CompleteIndex(const ThemeIndex &index, const QStringList &searchPaths, QSet<QString> &seen) {
    if (!index.found)
        return false;
    if (HasIcon(index.folders, QStringLiteral("folder")) &&
        HasIcon(index.folders, QStringLiteral("text-x-generic")))
        return true;
    for (const QString &parent : index.inherits)
        if (Complete(parent, searchPaths, seen))
            return true;
    return false;
}

} // namespace

bool IsInstalledIconTheme(const QString &name, const QStringList &searchPaths) {
    return ReadIndex(name, searchPaths).found;
}

QString FirstCompleteIconTheme(const QStringList &searchPaths, const QString &except) {
    QStringList candidates;
    for (const char *name : kDesktopThemes)
        candidates.append(QLatin1String(name));
    QStringList others;
    for (const QString &base : searchPaths)
        if (!base.startsWith(u':'))
            others += QDir(base).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    others.sort();
    candidates += others;
    candidates.removeDuplicates();
    // Looked at in order, and no further than needed: reading a theme costs milliseconds.
    for (const QString &theme : std::as_const(candidates)) {
        if (theme == except || theme == QLatin1String("hicolor"))
            continue;
        // Each theme's index is read once: hidden themes are no choice.
        const ThemeIndex index = ReadIndex(theme, searchPaths);
        QSet<QString> seen{theme};
        if (!index.hidden && CompleteIndex(index, searchPaths, seen))
            return theme;
    }
    return {};
}

bool PlatformThemeKnowsIcons() {
    static const bool knows = [] {
        // A theme plugin (the portal's aside, which only hands dialogs to the
        // portal and leaves the rest to the generic theme).
        QFile maps(QStringLiteral("/proc/self/maps"));
        if (maps.open(QIODevice::ReadOnly)) {
            for (const QByteArray &line : maps.readAll().split('\n'))
                if (line.contains("/platformthemes/") && !line.contains("xdgdesktopportal"))
                    return true;
        }
        // Qt's generic and GNOME themes name fixed defaults; its KDE theme
        // reads the desktop's own settings and falls back on Breeze.
        const QString fallback = QIcon::fallbackThemeName();
        return !(fallback.isEmpty() || fallback == QLatin1String("hicolor") ||
                 fallback == QLatin1String("gnome"));
    }();
    return knows;
}

} // namespace platform
