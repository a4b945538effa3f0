#include "finder/alias.h"

#include "core/errors.h"
#include "core/folders.h"

#include <QCoreApplication>

#include <cerrno>
#include <climits>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kMaxNameBytes = NAME_MAX;
constexpr int kMaxAttempts = 10000;

// Cuts `text` to at most `limit` bytes without splitting a UTF-8 sequence.
QByteArray CutOnCharacterBoundary(const QByteArray &text, qsizetype limit) {
    if (text.size() <= limit)
        return text;
    qsizetype end = limit;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    return text.left(end);
}

} // namespace

QByteArray AliasName(const QByteArray &itemPath, int attempt) {
    QByteArray name = LastPathComponent(itemPath);
    if (name.isEmpty()) // the root folder has no name of its own
        name = QCoreApplication::translate("Alias", "File System").toUtf8();
    if (attempt <= 1)
        return name;

    // "report.pdf" -> "report (2).pdf"; a leading dot starts no extension.
    const qsizetype dot = name.lastIndexOf('.');
    const bool hasExtension = dot > 0 && dot < name.size() - 1;
    QByteArray stem = hasExtension ? name.left(dot) : name;
    const QByteArray extension = hasExtension ? name.mid(dot) : QByteArray();
    const QByteArray suffix = " (" + QByteArray::number(attempt) + ")" + extension;
    stem = CutOnCharacterBoundary(stem, kMaxNameBytes - suffix.size());
    return stem + suffix;
}

OSErr CreateAlias(const FSSpec *item, const FSSpec *folder, const QByteArray &name) {
    if (item->path.isEmpty() || folder->path.isEmpty())
        return paramErr;
    const QByteArray named = name.isEmpty() ? item->path : JoinPath(folder->path, name);
    for (int attempt = 1; attempt <= kMaxAttempts; ++attempt) {
        const QByteArray link = JoinPath(folder->path, AliasName(named, attempt));
        if (::symlink(item->path.constData(), link.constData()) == 0)
            return noErr;
        if (errno != EEXIST)
            return OSErrFromErrno(errno);
    }
    return dupFNErr;
}

OSErr ResolveAliasFile(FSSpec *spec, bool resolveChains, bool *targetIsFolder, bool *wasAliased) {
    if (targetIsFolder != nullptr)
        *targetIsFolder = false;
    if (wasAliased != nullptr)
        *wasAliased = false;
    if (!spec->path.startsWith('/'))
        return paramErr;

    // The file system follows the links, never the text of the path: in
    // "missing/../file" the ".." leaves a folder that does not exist.
    struct stat info;
    if (::lstat(spec->path.constData(), &info) != 0)
        return OSErrFromErrno(errno);
    if (!S_ISLNK(info.st_mode)) {
        if (targetIsFolder != nullptr)
            *targetIsFolder = S_ISDIR(info.st_mode);
        return noErr;
    }
    // The kernel follows the chain (at most 40 links; a loop fails).
    QByteArray path = spec->path;
    bool stopHere = false;
    if (!resolveChains) {
        QByteArray target(PATH_MAX, '\0');
        const ssize_t length = ::readlink(path.constData(), target.data(), target.size());
        if (length < 0)
            return OSErrFromErrno(errno);
        target.resize(length);
        path = target.startsWith('/') ? target : JoinPath(ParentPath(path), target);
        if (::lstat(path.constData(), &info) != 0)
            return errno == ELOOP ? OSErr(ioErr) : OSErr(fnfErr);
        // One step stops at the next link, named from its real folder.
        stopHere = S_ISLNK(info.st_mode);
    }
    const QByteArray resolved = RealPath(stopHere ? ParentPath(path) : path);
    if (resolved.isEmpty())
        return errno == ELOOP ? OSErr(ioErr) : OSErr(fnfErr);
    path = stopHere ? JoinPath(resolved, LastPathComponent(path)) : resolved;
    if (targetIsFolder != nullptr && ::stat(path.constData(), &info) == 0)
        *targetIsFolder = S_ISDIR(info.st_mode);
    if (wasAliased != nullptr)
        *wasAliased = true;
    spec->path = path;
    return noErr;
}
