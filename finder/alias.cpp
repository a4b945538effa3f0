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

QByteArray CleanPath(const QByteArray &path) {
    QList<QByteArray> parts;
    for (const QByteArray &part : path.split('/')) {
        if (part.isEmpty() || part == ".")
            continue;
        if (part == "..") {
            if (!parts.isEmpty())
                parts.removeLast();
            continue;
        }
        parts.append(part);
    }
    return "/" + parts.join('/');
}

OSErr ResolveAliasFile(FSSpec *spec, bool resolveChains, bool *targetIsFolder, bool *wasAliased) {
    constexpr int kMaxLinks = 40;
    if (targetIsFolder != nullptr)
        *targetIsFolder = false;
    if (wasAliased != nullptr)
        *wasAliased = false;
    if (!spec->path.startsWith('/'))
        return paramErr;

    QByteArray path = spec->path;
    int followed = 0;
    for (;;) {
        struct stat info;
        if (::lstat(path.constData(), &info) != 0)
            return followed == 0 ? OSErrFromErrno(errno) : OSErr(fnfErr);
        if (!S_ISLNK(info.st_mode) || (followed == 1 && !resolveChains)) {
            // The end of the chain, or as far as we were asked to go.
            if (S_ISLNK(info.st_mode) && ::stat(path.constData(), &info) != 0)
                info.st_mode = S_IFLNK;
            if (targetIsFolder != nullptr)
                *targetIsFolder = S_ISDIR(info.st_mode);
            break;
        }
        if (++followed > kMaxLinks)
            return ioErr;
        QByteArray target(PATH_MAX, '\0');
        const ssize_t length = ::readlink(path.constData(), target.data(), target.size());
        if (length < 0)
            return OSErrFromErrno(errno);
        target.resize(length);
        path = CleanPath(target.startsWith('/') ? target : JoinPath(ParentPath(path), target));
    }
    if (wasAliased != nullptr)
        *wasAliased = followed > 0;
    spec->path = path;
    return noErr;
}
