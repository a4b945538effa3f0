#include "foldermenus/menuicons.h"

#include "foldermenus/folderentries.h"

#include <QApplication>
#include <QFile>
#include <QHash>
#include <QMimeDatabase>
#include <QStyle>

namespace {

struct IconCache {
    QHash<QByteArray, QIcon> bySuffix; // "pdf", "tar.gz", "" for none
    QHash<QString, QIcon> byMimeType;  // several suffixes share one type
    QHash<QString, QIcon> byThemeName; // desktop entries' Icon keys
    QIcon folder;
    QIcon package;
};

IconCache &Cache() {
    static IconCache cache;
    return cache;
}

QIcon StandardIcon(QStyle::StandardPixmap which) {
    return QApplication::style()->standardIcon(which);
}

QIcon ThemeIcon(const QString &name, const QString &fallbackName, QStyle::StandardPixmap standard) {
    QIcon icon = QIcon::fromTheme(name);
    if (icon.isNull() && !fallbackName.isEmpty())
        icon = QIcon::fromTheme(fallbackName);
    return icon.isNull() ? StandardIcon(standard) : icon;
}

// The part of a name that decides its type: the last suffix, with "tar" before
// it kept ("x.tar.gz" is a compressed archive, not just compressed data).
QByteArray SuffixKey(const QByteArray &path) {
    const qsizetype slash = path.lastIndexOf('/');
    const qsizetype dot = path.lastIndexOf('.');
    if (dot <= slash + 1)
        return {};
    const QByteArray suffix = path.mid(dot + 1);
    const qsizetype previous = path.lastIndexOf('.', dot - 1);
    if (previous > slash + 1 && path.mid(previous + 1, dot - previous - 1) == "tar")
        return "tar." + suffix;
    return suffix;
}

QIcon FileIcon(const QByteArray &path) {
    IconCache &cache = Cache();
    const QByteArray key = SuffixKey(path);
    const auto known = cache.bySuffix.constFind(key);
    if (known != cache.bySuffix.constEnd())
        return *known;
    static const QMimeDatabase database;
    const QMimeType type = database.mimeTypeForFile(
        QStringLiteral("file.") + QFile::decodeName(key), QMimeDatabase::MatchExtension);
    auto byType = cache.byMimeType.constFind(type.name());
    if (byType == cache.byMimeType.constEnd())
        byType = cache.byMimeType.insert(
            type.name(), ThemeIcon(type.iconName(), type.genericIconName(), QStyle::SP_FileIcon));
    cache.bySuffix.insert(key, *byType);
    return *byType;
}

} // namespace

QIcon FolderEntryIcon(const FolderEntry &entry) {
    IconCache &cache = Cache();
    switch (entry.kind) {
    case FolderEntry::Kind::Folder:
        if (!entry.iconName.isEmpty()) {
            // The home folder, the user's folders and drives have icons of their own.
            auto known = cache.byThemeName.constFind(entry.iconName);
            if (known == cache.byThemeName.constEnd())
                known = cache.byThemeName.insert(
                    entry.iconName,
                    ThemeIcon(entry.iconName, QStringLiteral("folder"), QStyle::SP_DirIcon));
            return *known;
        }
        if (cache.folder.isNull())
            cache.folder = ThemeIcon(QStringLiteral("folder"), {}, QStyle::SP_DirIcon);
        return cache.folder;
    case FolderEntry::Kind::Package:
        if (cache.package.isNull())
            cache.package =
                ThemeIcon(QStringLiteral("application-x-executable"), {}, QStyle::SP_DirIcon);
        return cache.package;
    case FolderEntry::Kind::DesktopEntry:
        if (!entry.iconName.isEmpty()) {
            auto known = cache.byThemeName.constFind(entry.iconName);
            if (known == cache.byThemeName.constEnd()) {
                // Icon is a theme name or, now and then, a file of its own.
                QIcon icon = entry.iconName.startsWith(u'/') ? QIcon(entry.iconName)
                                                             : QIcon::fromTheme(entry.iconName);
                if (icon.isNull())
                    icon = ThemeIcon(QStringLiteral("application-x-executable"), {},
                                     QStyle::SP_FileIcon);
                known = cache.byThemeName.insert(entry.iconName, icon);
            }
            return *known;
        }
        return FileIcon(entry.path);
    case FolderEntry::Kind::File:
        break;
    }
    return FileIcon(entry.path);
}

void ClearFolderIconCache() {
    Cache() = IconCache();
}

void WarmUpFolderIcons() {
    const int size = QApplication::style()->pixelMetric(QStyle::PM_SmallIconSize);
    FolderEntry entry;
    entry.kind = FolderEntry::Kind::Folder;
    FolderEntryIcon(entry).pixmap(size);
    entry.kind = FolderEntry::Kind::File;
    for (const char *name : {"a.txt", "a.pdf", "a.png", "a.jpg", "a.odt", "a"}) {
        entry.path = name;
        FolderEntryIcon(entry).pixmap(size);
    }
}
