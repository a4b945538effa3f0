#include "finder/launchertrust.h"

#include "core/errors.h"
#include "core/folders.h"
#include "platform/service.h"
#include "platform/trustmarks.h"

#include <QMutex>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace {

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

// The application and autostart folders as the file system names them, each
// ending in "/"; worked out again only when the environment changes.
QList<QByteArray> TrustedFolders() {
    static QMutex mutex;
    static QByteArray environment;
    static QList<QByteArray> folders;
    QByteArray now;
    for (const char *variable :
         {"HOME", "XDG_DATA_HOME", "XDG_DATA_DIRS", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS"})
        now += qgetenv(variable) + '\0';
    const QMutexLocker lock(&mutex);
    if (now == environment)
        return folders;
    environment = now;
    QList<QByteArray> candidates = ApplicationFolders();
    if (QByteArray config; FindPreferencesFolder(&config, false) == noErr)
        candidates.append(JoinPath(config, "autostart"));
    for (const QByteArray &folder : SearchPath("XDG_CONFIG_DIRS", "/etc/xdg"))
        candidates.append(JoinPath(folder, "autostart"));
    folders.clear();
    for (const QByteArray &folder : candidates) {
        char resolved[PATH_MAX];
        if (::realpath(folder.constData(), resolved) != nullptr)
            folders.append(JoinPath(QByteArray(resolved), ""));
    }
    return folders;
}

} // namespace

bool IsTrustedLauncher(const QByteArray &path) {
    char resolved[PATH_MAX];
    if (::realpath(path.constData(), resolved) == nullptr)
        return false;
    const QByteArray real(resolved);
    for (const QByteArray &folder : TrustedFolders()) {
        if (real.startsWith(folder))
            return true;
    }
    struct stat info;
    if (::stat(resolved, &info) != 0 ||
        (!S_ISDIR(info.st_mode) && (!S_ISREG(info.st_mode) || ::access(resolved, X_OK) != 0)))
        return false;
    return platform::hasService<platform::TrustMarks>() &&
           platform::service<platform::TrustMarks>().isMarkedTrusted(real);
}

void TrustLauncher(const QByteArray &path, std::function<void(OSErr)> done) {
    char resolved[PATH_MAX];
    struct stat info;
    if (::realpath(path.constData(), resolved) == nullptr || ::stat(resolved, &info) != 0)
        return done(OSErrFromErrno(errno));
    // Executable wherever it is readable, as a file manager allows launching.
    if (S_ISREG(info.st_mode) &&
        ::chmod(resolved, info.st_mode | ((info.st_mode & 0444) >> 2)) != 0)
        return done(OSErrFromErrno(errno));
    if (!platform::hasService<platform::TrustMarks>())
        return done(unimpErr);
    platform::service<platform::TrustMarks>().markTrusted(QByteArray(resolved), std::move(done));
}
