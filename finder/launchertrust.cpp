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
        if (const QByteArray real = RealPath(folder); !real.isEmpty())
            folders.append(JoinPath(real, ""));
    }
    return folders;
}

} // namespace

bool IsTrustedLauncher(const QByteArray &path) {
    const QByteArray real = RealPath(path);
    if (real.isEmpty())
        return false;
    for (const QByteArray &folder : TrustedFolders()) {
        if (real.startsWith(folder))
            return true;
    }
    struct stat info;
    if (::stat(real.constData(), &info) != 0 ||
        (!S_ISDIR(info.st_mode) &&
         (!S_ISREG(info.st_mode) || ::access(real.constData(), X_OK) != 0)))
        return false;
    return platform::hasService<platform::TrustMarks>() &&
           platform::service<platform::TrustMarks>().isMarkedTrusted(real);
}

void TrustLauncher(const QByteArray &path, std::function<void(OSErr)> done) {
    const QByteArray real = RealPath(path);
    struct stat info;
    if (real.isEmpty() || ::stat(real.constData(), &info) != 0)
        return done(OSErrFromErrno(errno));
    // Executable wherever it is readable, as a file manager allows launching.
    if (S_ISREG(info.st_mode) &&
        ::chmod(real.constData(), info.st_mode | ((info.st_mode & 0444) >> 2)) != 0)
        return done(OSErrFromErrno(errno));
    if (!platform::hasService<platform::TrustMarks>())
        return done(unimpErr);
    platform::service<platform::TrustMarks>().markTrusted(real, std::move(done));
}
