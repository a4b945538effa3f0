#include "foldermenus/specialfolders.h"

#include "core/folders.h"
#include "core/safefile.h"
#include "platform/mountinfo.h"

namespace {

QByteArray ReadSmallFile(const QByteArray &path) {
    QByteArray contents;
    ReadRegularFile(path, kSmallFileLimit, &contents);
    return contents;
}

// Whether the block device `source` (a path under /dev) can be taken out: the
// kernel says so for the disk, or the desktop mounted it where removable media go.
bool IsRemovable(const QByteArray &source, const QByteArray &mountPoint) {
    if (mountPoint.startsWith("/media/") || mountPoint.startsWith("/run/media/"))
        return true;
    const QByteArray device = LastPathComponent(RealPath(source));
    if (device.isEmpty())
        return false;
    // A partition's flag is its disk's: the folder above it in sysfs.
    const QByteArray block = RealPath("/sys/class/block/" + device);
    for (const QByteArray &folder : {block, ParentPath(block)}) {
        if (ReadSmallFile(JoinPath(folder, "removable")).trimmed() == "1")
            return true;
    }
    return false;
}

} // namespace

SpecialFolders SpecialFolders::current() {
    SpecialFolders folders;
    folders.icons_.insert("/", QStringLiteral("drive-harddisk"));
    folders.addMounts();
    if (QByteArray home; FindHomeFolder(&home) == noErr) {
        home = RealPath(home);
        folders.addUserFolders(home);
        if (!home.isEmpty())
            folders.icons_.insert(home, QStringLiteral("user-home"));
    }
    return folders;
}

// Mounts of block devices are drives; the rest (proc, tmpfs, ...) are ordinary folders.
void SpecialFolders::addMounts() {
    for (const QByteArray &line : ReadSmallFile("/proc/self/mountinfo").split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype separator = fields.indexOf("-");
        if (fields.size() < 5 || separator < 0 || separator + 2 >= fields.size())
            continue;
        const QByteArray mountPoint = platform::DecodeOctalEscapes(fields[4]);
        const QByteArray source = platform::DecodeOctalEscapes(fields[separator + 2]);
        if (!source.startsWith("/dev/") || mountPoint == "/")
            continue;
        mounts_.insert(mountPoint, source);
    }
}

QString SpecialFolders::iconFor(const QByteArray &canonicalPath) const {
    if (const auto icon = icons_.constFind(canonicalPath); icon != icons_.cend())
        return *icon;
    const auto mount = mounts_.constFind(canonicalPath);
    if (mount == mounts_.cend())
        return {};
    return IsRemovable(*mount, canonicalPath) ? QStringLiteral("drive-removable-media")
                                              : QStringLiteral("drive-harddisk");
}

// Lines such as XDG_MUSIC_DIR="$HOME/Music"; a folder set to the home folder
// itself is switched off.
void SpecialFolders::addUserFolders(const QByteArray &home) {
    static const QHash<QByteArray, QString> kIcons{
        {"XDG_DESKTOP_DIR", QStringLiteral("user-desktop")},
        {"XDG_DOCUMENTS_DIR", QStringLiteral("folder-documents")},
        {"XDG_DOWNLOAD_DIR", QStringLiteral("folder-download")},
        {"XDG_MUSIC_DIR", QStringLiteral("folder-music")},
        {"XDG_PICTURES_DIR", QStringLiteral("folder-pictures")},
        {"XDG_VIDEOS_DIR", QStringLiteral("folder-videos")},
    };
    QByteArray config;
    if (FindPreferencesFolder(&config, false) != noErr)
        return;
    for (const QByteArray &line : ReadSmallFile(JoinPath(config, "user-dirs.dirs")).split('\n')) {
        const qsizetype equals = line.indexOf('=');
        const QString icon = kIcons.value(line.left(equals).trimmed());
        if (equals < 0 || icon.isEmpty())
            continue;
        QByteArray value = line.mid(equals + 1).trimmed();
        if (value.size() < 2 || !value.startsWith('"') || !value.endsWith('"'))
            continue;
        value = value.mid(1, value.size() - 2);
        if (value.startsWith("$HOME"))
            value = home + value.mid(5);
        const QByteArray folder = RealPath(value);
        if (!folder.isEmpty() && folder != home)
            icons_.insert(folder, icon);
    }
}
