#include "foldermenus/folderentries.h"

#include "core/desktopentry.h"
#include "core/errors.h"
#include "core/folders.h"
#include "core/safefile.h"
#include "finder/launchertrust.h"
#include "foldermenus/specialfolders.h"

#include <QFile>
#include <QHash>
#include <QLocale>
#include <QLoggingCategory>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcFolderEntries, "kestrel.foldermenus")

namespace {

constexpr std::uint16_t kInvisible = 0x4000;
// How many entries pass between two looks at a stop request.
constexpr std::size_t kStopCheckInterval = 512;

// An entry as the folder listed it. Its path is made once, and is the one the
// item keeps; the name is the path's tail.
struct RawEntry {
    QByteArray path;
    qsizetype nameStart;
    unsigned char type; // d_type; DT_UNKNOWN asks lstat
    std::uint16_t flags;

    const char *name() const { return path.constData() + nameStart; }
    QByteArrayView nameView() const { return QByteArrayView(path).sliced(nameStart); }
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

bool Stopped(const std::stop_token &stop, std::size_t done) {
    return done % kStopCheckInterval == 0 && stop.stop_requested();
}

unsigned char TypeOf(int directory, const RawEntry &entry) {
    if (entry.type != DT_UNKNOWN)
        return entry.type;
    struct stat info {};
    if (fstatat(directory, entry.name(), &info, AT_SYMLINK_NOFOLLOW) != 0)
        return DT_UNKNOWN;
    if (S_ISDIR(info.st_mode))
        return DT_DIR;
    if (S_ISLNK(info.st_mode))
        return DT_LNK;
    return S_ISREG(info.st_mode) ? DT_REG : DT_UNKNOWN;
}

// An application folder carries its program as an executable file named AppRun.
// Looked up from the folder already open, so the path is not walked again.
bool IsPackage(int directory, QByteArrayView name) {
    struct stat info {};
    return fstatat(directory,
                   name.isEmpty() ? "AppRun" : (name.toByteArray() + "/AppRun").constData(), &info,
                   0) == 0 &&
           S_ISREG(info.st_mode) && (info.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0;
}

// A ".hidden" file is read only when it is a small regular file; anything
// else (a pipe, a huge or sparse file) is logged and leaves nothing hidden.
std::vector<QByteArray> HiddenNames(const QByteArray &folder) {
    QByteArray contents;
    if (const OSErr err = ReadRegularFile(JoinPath(folder, ".hidden"), kSmallFileLimit, &contents);
        err != noErr) {
        qCWarning(lcFolderEntries, "the hidden-names file of %s is ignored (error %d)",
                  qPrintable(QFile::decodeName(folder)), int(err));
        return {};
    }
    return HiddenNamesFromFile(contents);
}

// Whether a launcher of the current desktop ($XDG_CURRENT_DESKTOP) lists the entry.
bool ListedByLaunchers(const DesktopEntry &desktop, const QByteArray &currentDesktops) {
    return desktop.isLauncher() && !desktop.boolValue(QStringLiteral("NoDisplay"), false) &&
           desktop.isShownIn(currentDesktops);
}

// Whether `canonicalFolder` lies in one of the folders a launcher reads its
// entries from.
bool InApplicationFolder(const QByteArray &canonicalFolder) {
    if (canonicalFolder.isEmpty())
        return false;
    for (const QByteArray &folder : ApplicationFolders()) {
        const QByteArray root = RealPath(folder);
        if (!root.isEmpty() && (canonicalFolder == root || canonicalFolder.startsWith(root + '/')))
            return true;
    }
    return false;
}

// The name an entry shows, taken from the entry at `path`: a trusted desktop
// entry of Type Application or Link shows its localized Name (and brings its
// Icon); anything else shows its file name. An untrusted launcher shows as the
// file it is, so that it cannot pass itself off as a document.
QString DisplayName(const QByteArray &path, const DesktopEntry *desktop, FolderEntry *entry) {
    if (desktop != nullptr && desktop->isLauncher() && IsTrustedLauncher(path)) {
        static const QString locale = QLocale::system().name();
        entry->kind = FolderEntry::Kind::DesktopEntry;
        entry->iconName = desktop->value(QStringLiteral("Icon")).value_or(QString());
        const auto name = desktop->localizedValue(QStringLiteral("Name"), locale);
        if (name && !name->isEmpty())
            return *name;
    }
    return QString::fromLocal8Bit(QByteArrayView(path).sliced(path.lastIndexOf('/') + 1));
}

// Follows the link `name` of `directory` to its final target as the file
// system resolves it: the kernel walks the chain (a loop or a chain past its
// limit fails) and names the place it reached. A broken link stays the link.
void FollowLink(int directory, const char *name, FolderEntry *entry) {
    const int target = openat(directory, name, O_PATH | O_CLOEXEC);
    if (target < 0)
        return;
    struct stat info {};
    char resolved[PATH_MAX];
    const ssize_t length =
        readlink(("/proc/self/fd/" + QByteArray::number(target)).constData(), resolved, PATH_MAX);
    if (fstat(target, &info) == 0 && length > 0 && length < PATH_MAX && resolved[0] == '/') {
        entry->link = entry->path;
        entry->path = QByteArray(resolved, length);
        if (S_ISDIR(info.st_mode))
            entry->kind =
                IsPackage(target, {}) ? FolderEntry::Kind::Package : FolderEntry::Kind::Folder;
    } else if (const QByteArray real = RealPath(entry->path); !real.isEmpty()) {
        // Without /proc the C library walks the chain instead.
        entry->link = entry->path;
        entry->path = real;
        if (stat(real.constData(), &info) == 0 && S_ISDIR(info.st_mode))
            entry->kind =
                IsPackage(target, {}) ? FolderEntry::Kind::Package : FolderEntry::Kind::Folder;
    }
    close(target);
}

// The desktop's own folders (home, the user's folders, drives) get icons of
// their own; looked up only when the listing holds folders.
void MarkSpecialFolders(const QByteArray &folder, const QByteArray &canonicalFolder,
                        std::vector<FolderEntry> *entries) {
    std::optional<SpecialFolders> special;
    for (FolderEntry &entry : *entries) {
        if (entry.kind != FolderEntry::Kind::Folder)
            continue;
        if (!special)
            special = SpecialFolders::current();
        // Plain folders are named under the folder as given; compare the real place.
        QByteArray real = entry.path;
        if (!canonicalFolder.isEmpty() && canonicalFolder != folder &&
            ParentPath(entry.path) == folder)
            real = JoinPath(canonicalFolder, LastPathComponent(entry.path));
        entry.iconName = special->iconFor(real);
    }
}

// Appends the sort key of `name` (see FolderSortKey) to `keys`: all keys of a
// folder go into one buffer, compared as plain code units. Returns whether the
// name holds a '>', where a sort prefix may end.
bool AppendSortKey(const QString &name, std::u16string *keys) {
    const char16_t *text = reinterpret_cast<const char16_t *>(name.utf16());
    const qsizetype size = name.size();
    bool ascii = true;
    bool angle = false;
    for (qsizetype i = 0; i < size && ascii; ++i) {
        ascii = text[i] < 0x80;
        angle = angle || text[i] == u'>';
    }
    if (!ascii) {
        const QString folded = name.normalized(QString::NormalizationForm_D).toCaseFolded();
        keys->append(reinterpret_cast<const char16_t *>(folded.utf16()),
                     std::size_t(folded.size()));
        return name.contains(u'>');
    }
    for (qsizetype i = 0; i < size; ++i)
        keys->push_back((text[i] >= u'A' && text[i] <= u'Z') ? char16_t(text[i] + 32) : text[i]);
    return angle;
}

FolderListing Failed(const QByteArray &folder, int error) {
    qCWarning(lcFolderEntries, "cannot read the folder %s: %s",
              qPrintable(QFile::decodeName(folder)), strerror(error));
    FolderListing listing;
    listing.status = OSErrFromErrno(error);
    return listing;
}

FolderListing Abandoned() {
    FolderListing listing;
    listing.status = userCanceledErr;
    return listing;
}

} // namespace

QString FolderSortKey(const QString &name) {
    std::u16string key;
    AppendSortKey(name, &key);
    return QString::fromUtf16(key.data(), qsizetype(key.size()));
}

QString FolderFilterKey(const QString &text) {
    QString key = FolderSortKey(text);
    key.removeIf([](QChar c) {
        return c.category() == QChar::Mark_NonSpacing || c.category() == QChar::Mark_Enclosing;
    });
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

FolderListing ReadFolderEntries(const QByteArray &folder, std::int32_t depth,
                                std::stop_token stop) {
    Directory directory(folder);
    if (directory.get() == nullptr)
        return Failed(folder, errno);
    const int fd = dirfd(directory.get());

    // One pass over the folder; everything else works on what it returned.
    const qsizetype nameStart = JoinPath(folder, "").size();
    std::vector<RawEntry> raw;
    bool hasHiddenFile = false;
    errno = 0;
    while (const dirent *entry = readdir(directory.get())) {
        if (IsDotOrDotDot(entry->d_name))
            continue;
        raw.push_back({JoinPath(folder, entry->d_name), nameStart, entry->d_type, 0});
        hasHiddenFile = hasHiddenFile || std::strcmp(entry->d_name, ".hidden") == 0;
        if (Stopped(stop, raw.size()))
            return Abandoned();
    }
    if (errno != 0)
        return Failed(folder, errno);
    FolderListing listing;
    listing.found = std::uint32_t(raw.size());

    // The system's own files at the top of a volume.
    if (IsVolumeRoot(folder)) {
        for (RawEntry &entry : raw) {
            if (entry.nameView() == "mach" || entry.nameView() == "mach.sym")
                entry.flags |= kInvisible;
        }
    }

    if (hasHiddenFile) {
        QHash<QByteArrayView, std::size_t> byName;
        byName.reserve(qsizetype(raw.size()));
        for (std::size_t i = 0; i < raw.size(); ++i)
            byName.insert(raw[i].nameView(), i);
        for (const QByteArray &name : HiddenNames(folder)) {
            const auto found = byName.constFind(name);
            if (found != byName.constEnd())
                raw[*found].flags |= kInvisible;
        }
    }

    // An application folder shows what a launcher would list: folders and
    // the desktop entries it does not leave out.
    const QByteArray canonicalFolder = RealPath(folder);
    const bool launcherFolder = InApplicationFolder(canonicalFolder);
    const QByteArray currentDesktops = qgetenv("XDG_CURRENT_DESKTOP");

    struct Ordered {
        std::size_t keyStart;
        std::size_t keyLength;
        std::size_t index;
        bool angle; // a '>' in the name: perhaps a sort prefix
    };
    std::vector<Ordered> order;
    order.reserve(raw.size());
    std::u16string keys;
    listing.entries.reserve(raw.size());
    std::size_t done = 0;
    for (RawEntry &entry : raw) {
        if (Stopped(stop, ++done))
            return Abandoned();
        if (*entry.name() == '.' || (entry.flags & kInvisible) != 0)
            continue;
        entry.type = TypeOf(fd, entry);
        FolderEntry item;
        std::optional<DesktopEntry> desktop;
        if (entry.nameView().endsWith(".desktop") && (entry.type == DT_REG || entry.type == DT_LNK))
            desktop = DesktopEntry::read(entry.path);
        item.path = entry.path;
        item.name = DisplayName(item.path, desktop ? &*desktop : nullptr, &item);
        if (depth < kDeepestMenu) {
            if (entry.type == DT_LNK)
                FollowLink(fd, entry.name(), &item);
            else if (entry.type == DT_DIR)
                item.kind = IsPackage(fd, entry.nameView()) ? FolderEntry::Kind::Package
                                                            : FolderEntry::Kind::Folder;
            item.submenu = item.kind == FolderEntry::Kind::Folder;
        } else if (entry.type == DT_DIR) {
            item.kind = FolderEntry::Kind::Folder; // shown as one, but no submenu this deep
        }
        if (launcherFolder && item.kind != FolderEntry::Kind::Folder &&
            item.kind != FolderEntry::Kind::Package &&
            !(desktop && ListedByLaunchers(*desktop, currentDesktops)))
            continue;
        const std::size_t keyStart = keys.size();
        const bool angle = AppendSortKey(item.name, &keys);
        order.push_back({keyStart, keys.size() - keyStart, listing.entries.size(), angle});
        listing.entries.push_back(std::move(item));
    }

    // Each new item goes after every item that does not sort after it: that is
    // a stable sort of the keys in the order the folder returned the entries.
    const std::u16string_view allKeys(keys);
    std::stable_sort(order.begin(), order.end(), [allKeys](const Ordered &a, const Ordered &b) {
        return allKeys.substr(a.keyStart, a.keyLength) < allKeys.substr(b.keyStart, b.keyLength);
    });
    std::vector<FolderEntry> sorted;
    sorted.reserve(order.size());
    for (const Ordered &position : order) {
        FolderEntry &entry = listing.entries[position.index];
        // A sort prefix orders the item but is not shown: "10>>Mail" shows "Mail".
        const qsizetype prefix = position.angle ? entry.name.indexOf(QLatin1String(">>")) : -1;
        if (prefix >= 0) {
            entry.text = entry.name.mid(prefix + 2);
            entry.separator = entry.text == QLatin1String("-");
        } else {
            entry.text = entry.name;
        }
        sorted.push_back(std::move(entry));
    }
    listing.entries = std::move(sorted);
    MarkSpecialFolders(folder, canonicalFolder, &listing.entries);
    return listing;
}
