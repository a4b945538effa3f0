#include "core/folders.h"

#include "core/errors.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <sys/stat.h>

namespace {

QByteArray AbsoluteFromEnvironment(const char *name) {
    const QByteArray value = qgetenv(name);
    // The base directory rules ignore relative values.
    return value.startsWith('/') ? value : QByteArray();
}

OSErr CheckFolder(const QByteArray &path) {
    struct stat info {};
    if (::stat(path.constData(), &info) != 0)
        return OSErrFromErrno(errno);
    return S_ISDIR(info.st_mode) ? noErr : dirNFErr;
}

} // namespace

OSErr FindPreferencesFolder(QByteArray *path, bool create) {
    QByteArray folder = AbsoluteFromEnvironment("XDG_CONFIG_HOME");
    if (folder.isEmpty()) {
        QByteArray home;
        if (OSErr err = FindHomeFolder(&home); err != noErr)
            return err;
        folder = JoinPath(home, ".config");
    }
    if (create && ::mkdir(folder.constData(), 0700) != 0 && errno != EEXIST)
        return OSErrFromErrno(errno);
    if (OSErr err = CheckFolder(folder); err != noErr)
        return err;
    *path = folder;
    return noErr;
}

OSErr FindHomeFolder(QByteArray *path) {
    const QByteArray home = AbsoluteFromEnvironment("HOME");
    if (home.isEmpty())
        return fnfErr;
    if (OSErr err = CheckFolder(home); err != noErr)
        return err;
    *path = home;
    return noErr;
}

OSErr FindApplicationsFolder(QByteArray *path) {
    const QByteArray folder = "/usr/share/applications";
    if (OSErr err = CheckFolder(folder); err != noErr)
        return err;
    *path = folder;
    return noErr;
}

QList<QByteArray> ApplicationFolders() {
    QList<QByteArray> folders;
    QByteArray dataHome = AbsoluteFromEnvironment("XDG_DATA_HOME");
    if (dataHome.isEmpty()) {
        QByteArray home;
        if (FindHomeFolder(&home) == noErr)
            dataHome = JoinPath(home, ".local/share");
    }
    if (!dataHome.isEmpty())
        folders.append(JoinPath(dataHome, "applications"));
    for (const QByteArray &dir : SearchPath("XDG_DATA_DIRS", "/usr/local/share/:/usr/share/"))
        folders.append(JoinPath(dir, "applications"));
    return folders;
}

QList<QByteArray> SearchPath(const char *variable, const QByteArray &fallback) {
    QByteArray value = qgetenv(variable);
    if (value.isEmpty())
        value = fallback;
    QList<QByteArray> folders;
    for (const QByteArray &folder : value.split(':')) {
        if (folder.startsWith('/'))
            folders.append(folder);
    }
    return folders;
}

QByteArray JoinPath(const QByteArray &folder, const QByteArray &name) {
    if (folder.endsWith('/'))
        return folder + name;
    return folder + '/' + name;
}

QByteArray ParentPath(const QByteArray &path) {
    QByteArray trimmed = path;
    while (trimmed.size() > 1 && trimmed.endsWith('/'))
        trimmed.chop(1);
    const qsizetype slash = trimmed.lastIndexOf('/');
    if (slash <= 0)
        return "/";
    return trimmed.left(slash);
}

QByteArray RealPath(const QByteArray &path) {
    char resolved[PATH_MAX];
    return ::realpath(path.constData(), resolved) != nullptr ? QByteArray(resolved) : QByteArray();
}

QByteArray LastPathComponent(const QByteArray &path) {
    QByteArray trimmed = path;
    while (trimmed.size() > 1 && trimmed.endsWith('/'))
        trimmed.chop(1);
    if (trimmed == "/")
        return {};
    return trimmed.mid(trimmed.lastIndexOf('/') + 1);
}

QByteArray FileUriFromPath(const QByteArray &path) {
    return "file://" + path.toPercentEncoding("/");
}
