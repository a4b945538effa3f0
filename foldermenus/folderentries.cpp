#include "foldermenus/folderentries.h"

#include "core/desktopentry.h"
#include "core/errors.h"
#include "core/folders.h"
#include "core/lists.h"
#include "finder/launchertrust.h"

#include <QFile>
#include <QHash>
#include <QLocale>
#include <QLoggingCategory>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcFolderEntries, "kestrel.foldermenus")

namespace {

constexpr std::uint16_t kInvisible = 0x4000;

struct RawEntry {
    QByteArray name;
    unsigned char type; // d_type; DT_UNKNOWN asks lstat
    std::uint16_t flags;
};

class Directory {
public:
    explicit Directory(const QByteArray &path) : dir_(opendir(path.constData())) {}
    ~Directory() {
        if (dir_ != nullptr)
            closedir(dir_);
    }
    Directory(const Directory &) = delete;
    Directory &operator=(const Directory &) = delete;
    DIR *get() const { return dir_; }

private:
    DIR *dir_;
};

bool IsDotOrDotDot(const char *name) {
    return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

unsigned char TypeOf(int directory, const RawEntry &entry) {
    if (entry.type != DT_UNKNOWN)
        return entry.type;
    struct stat info {};
    if (fstatat(directory, entry.name.constData(), &info, AT_SYMLINK_NOFOLLOW) != 0)
        return DT_UNKNOWN;
    if (S_ISDIR(info.st_mode))
        return DT_DIR;
    if (S_ISLNK(info.st_mode))
        return DT_LNK;
    return S_ISREG(info.st_mode) ? DT_REG : DT_UNKNOWN;
}

// An application folder carries its program as an executable file named AppRun.
bool IsPackage(const QByteArray &folder) {
    const QByteArray appRun = JoinPath(folder, "AppRun");
    struct stat info {};
    return stat(appRun.constData(), &info) == 0 && S_ISREG(info.st_mode) &&
           access(appRun.constData(), X_OK) == 0;
}

// Reads the whole ".hidden" file into a block of its own size. Any failure
// skips the file; the menu is built without it.
QByteArray ReadHiddenFile(int directory) {
    const int file = openat(directory, ".hidden", O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (file < 0) {
        qCWarning(lcFolderEntries, "cannot open .hidden: %s", strerror(errno));
        return {};
    }
    QByteArray contents;
    struct stat info {};
    if (fstat(file, &info) == 0 && S_ISREG(info.st_mode)) {
        OSErr err = noErr;
        Ptr block = AllocPtr(&err, Size(info.st_size));
        if (block != nullptr) {
            Size done = 0;
            while (done < Size(info.st_size)) {
                const ssize_t got = read(file, block + done, std::size_t(info.st_size - done));
                if (got < 0 && errno == EINTR)
                    continue;
                if (got <= 0)
                    break;
                done += got;
            }
            if (done == Size(info.st_size))
                contents = QByteArray(block, qsizetype(done));
            else
                qCWarning(lcFolderEntries, "cannot read .hidden: %s", strerror(errno));
            DestroyPtr(block);
        }
    }
    close(file);
    return contents;
}

QString DisplayName(const QByteArray &folder, const RawEntry &entry, FolderEntry *out) {
    if (entry.name.endsWith(".desktop") && (entry.type == DT_REG || entry.type == DT_LNK)) {
        if (const auto desktop = DesktopEntry::read(JoinPath(folder, entry.name))) {
            const QString type = desktop->value(QStringLiteral("Type")).value_or(QString());
            if (type == QLatin1String("Application") || type == QLatin1String("Link")) {
                // An untrusted launcher shows as the file it is, so that it
                // cannot pass itself off as a document.
                if (!IsTrustedLauncher(JoinPath(folder, entry.name)))
                    return QFile::decodeName(entry.name);
                static const QString locale = QLocale::system().name();
                out->kind = FolderEntry::Kind::DesktopEntry;
                out->iconName = desktop->value(QStringLiteral("Icon")).value_or(QString());
                const auto name = desktop->localizedValue(QStringLiteral("Name"), locale);
                if (name && !name->isEmpty())
                    return *name;
            }
        }
    }
    return QFile::decodeName(entry.name);
}

// Follows a link to its final target; loops and chains longer than the
// system's limit fail, and a broken link stays the link itself.
void FollowLink(FolderEntry *entry) {
    char resolved[PATH_MAX];
    if (realpath(entry->path.constData(), resolved) == nullptr)
        return;
    struct stat info {};
    if (stat(resolved, &info) != 0)
        return;
    entry->path = QByteArray(resolved);
    if (S_ISDIR(info.st_mode))
        entry->kind =
            IsPackage(entry->path) ? FolderEntry::Kind::Package : FolderEntry::Kind::Folder;
}

} // namespace

QString FolderSortKey(const QString &name) {
    const char16_t *text = reinterpret_cast<const char16_t *>(name.utf16());
    const qsizetype size = name.size();
    bool ascii = true;
    for (qsizetype i = 0; i < size && ascii; ++i)
        ascii = text[i] < 0x80;
    if (!ascii)
        return name.normalized(QString::NormalizationForm_D).toCaseFolded();
    QString key(size, Qt::Uninitialized);
    char16_t *out = reinterpret_cast<char16_t *>(key.data());
    for (qsizetype i = 0; i < size; ++i)
        out[i] = (text[i] >= u'A' && text[i] <= u'Z') ? char16_t(text[i] + 32) : text[i];
    return key;
}

std::vector<QByteArray> HiddenNamesFromFile(const QByteArray &contents) {
    std::vector<QByteArray> names;
    unsigned char line[256];
    std::uint8_t length = 0;
    for (const char byte : contents) {
        if (byte == '\n' || byte == '\r') {
            if (length > 0)
                names.emplace_back(reinterpret_cast<const char *>(line), length);
            length = 0;
        } else {
            line[length] = static_cast<unsigned char>(byte);
            ++length; // a byte: an over-long line starts filling from the front again
        }
    }
    return names;
}

bool IsVolumeRoot(const QByteArray &folder) {
    struct stat self {};
    struct stat parent {};
    if (stat(folder.constData(), &self) != 0 ||
        stat(JoinPath(folder, "..").constData(), &parent) != 0)
        return false;
    return self.st_dev != parent.st_dev || self.st_ino == parent.st_ino;
}

FolderListing ReadFolderEntries(const QByteArray &folder, std::int32_t depth) {
    FolderListing listing;
    Directory directory(folder);
    if (directory.get() == nullptr) {
        listing.status = OSErrFromErrno(errno);
        qCWarning(lcFolderEntries, "cannot read the folder %s: %s",
                  qPrintable(QFile::decodeName(folder)), strerror(errno));
        return listing;
    }
    const int fd = dirfd(directory.get());

    // One pass over the folder; everything else works on what it returned.
    std::vector<RawEntry> raw;
    bool hasHiddenFile = false;
    errno = 0;
    while (const dirent *entry = readdir(directory.get())) {
        if (IsDotOrDotDot(entry->d_name))
            continue;
        raw.push_back({QByteArray(entry->d_name), entry->d_type, 0});
        hasHiddenFile = hasHiddenFile || std::strcmp(entry->d_name, ".hidden") == 0;
    }
    if (errno != 0) {
        listing.status = OSErrFromErrno(errno);
        qCWarning(lcFolderEntries, "cannot read the folder %s: %s",
                  qPrintable(QFile::decodeName(folder)), strerror(errno));
        return listing;
    }
    listing.found = std::uint32_t(raw.size());

    // The system's own files at the top of a volume.
    if (IsVolumeRoot(folder)) {
        for (RawEntry &entry : raw) {
            if (entry.name == "mach" || entry.name == "mach.sym")
                entry.flags |= kInvisible;
        }
    }

    if (hasHiddenFile) {
        QHash<QByteArray, std::size_t> byName;
        byName.reserve(qsizetype(raw.size()));
        for (std::size_t i = 0; i < raw.size(); ++i)
            byName.insert(raw[i].name, i);
        for (const QByteArray &name : HiddenNamesFromFile(ReadHiddenFile(fd))) {
            const auto found = byName.constFind(name);
            if (found != byName.constEnd())
                raw[*found].flags |= kInvisible;
        }
    }

    struct Ordered {
        QString key;
        std::size_t index;
    };
    std::vector<Ordered> order;
    order.reserve(raw.size());
    listing.entries.reserve(raw.size());
    for (RawEntry &entry : raw) {
        if (entry.name.startsWith('.') || (entry.flags & kInvisible) != 0)
            continue;
        entry.type = TypeOf(fd, entry);
        FolderEntry item;
        item.path = JoinPath(folder, entry.name);
        item.name = DisplayName(folder, entry, &item);
        if (depth < kDeepestMenu) {
            if (entry.type == DT_LNK)
                FollowLink(&item);
            else if (entry.type == DT_DIR)
                item.kind =
                    IsPackage(item.path) ? FolderEntry::Kind::Package : FolderEntry::Kind::Folder;
            item.submenu = item.kind == FolderEntry::Kind::Folder;
        } else if (entry.type == DT_DIR) {
            item.kind = FolderEntry::Kind::Folder; // shown as one, but no submenu this deep
        }
        order.push_back({FolderSortKey(item.name), listing.entries.size()});
        listing.entries.push_back(std::move(item));
    }

    // Each new item goes after every item that does not sort after it: that is
    // a stable sort of the keys in the order the folder returned the entries.
    std::stable_sort(order.begin(), order.end(),
                     [](const Ordered &a, const Ordered &b) { return a.key < b.key; });
    std::vector<FolderEntry> sorted;
    sorted.reserve(order.size());
    for (const Ordered &position : order) {
        FolderEntry &entry = listing.entries[position.index];
        // A sort prefix orders the item but is not shown: "10>>Mail" shows "Mail".
        const qsizetype prefix = entry.name.indexOf(QLatin1String(">>"));
        if (prefix >= 0) {
            entry.text = entry.name.mid(prefix + 2);
            entry.separator = entry.text == QLatin1String("-");
        } else {
            entry.text = entry.name;
        }
        sorted.push_back(std::move(entry));
    }
    listing.entries = std::move(sorted);
    return listing;
}
