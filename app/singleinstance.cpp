#include "app/singleinstance.h"

#include "core/errors.h"
#include "core/folders.h"
#include "platform/alerts.h"
#include "platform/service.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QFile>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr const char *kPrivateFolderName = "kestrel-menu";

QByteArray AbsoluteVariable(const char *name) {
    const QByteArray value = qgetenv(name);
    return value.startsWith('/') ? value : QByteArray();
}

// Opens `folder` when nobody but this user can put anything into it. Our own
// folder may not be a link and is kept at mode 0700; the session's run-time
// folder is the system's, so it is only checked.
int OpenPrivateFolder(const QByteArray &folder, bool ours, int *error) {
    const int fd =
        ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | (ours ? O_NOFOLLOW : 0));
    struct stat info {};
    if (fd < 0 || ::fstat(fd, &info) != 0) {
        *error = errno;
    } else if (info.st_uid != ::geteuid()) {
        *error = EPERM;
    } else if (ours && (info.st_mode & 0777) != 0700 && ::fchmod(fd, 0700) != 0) {
        *error = errno;
    } else if (!ours && (info.st_mode & 022) != 0) {
        *error = EPERM;
    } else {
        return fd;
    }
    if (fd >= 0)
        ::close(fd);
    return -1;
}

} // namespace

QByteArray SingleInstance::lockName() {
    // The same folder named in different ways (a trailing slash, a link) is
    // one key: the file system resolves the name.
    QByteArray preferences;
    FindPreferencesFolder(&preferences, true);
    if (const QByteArray resolved = RealPath(preferences); !resolved.isEmpty())
        preferences = resolved;
    const QByteArray key =
        QCryptographicHash::hash(preferences, QCryptographicHash::Sha256).toHex().left(16);
    return "kestrel-menu-" + QByteArray::number(::getuid()) + '-' + key + ".lock";
}

QList<QByteArray> SingleInstance::lockFolders() {
    QList<QByteArray> folders;
    if (const QByteArray runtime = AbsoluteVariable("XDG_RUNTIME_DIR"); !runtime.isEmpty())
        folders.append(runtime);
    QByteArray cache = AbsoluteVariable("XDG_CACHE_HOME");
    if (cache.isEmpty() && !AbsoluteVariable("HOME").isEmpty())
        cache = JoinPath(AbsoluteVariable("HOME"), ".cache");
    if (!cache.isEmpty())
        folders.append(JoinPath(cache, kPrivateFolderName));
    return folders;
}

SingleInstance::Outcome SingleInstance::acquire() {
    const QByteArray name = lockName();
    const QList<QByteArray> folders = lockFolders();
    failure_ = folders.isEmpty() ? fnfErr : noErr;
    for (const QByteArray &folder : folders) {
        const bool ours = LastPathComponent(folder) == kPrivateFolderName;
        if (ours) {
            ::mkdir(ParentPath(folder).constData(), 0700);
            ::mkdir(folder.constData(), 0700);
        }
        int error = 0;
        const int dir = OpenPrivateFolder(folder, ours, &error);
        const int fd = dir < 0
                           ? -1
                           : ::openat(dir, name.constData(),
                                      O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
        if (dir >= 0 && fd < 0)
            error = errno;
        if (dir >= 0)
            ::close(dir);
        if (fd >= 0 && ::flock(fd, LOCK_EX | LOCK_NB) == 0) {
            fds_.append(fd);
            continue;
        }
        if (fd >= 0) {
            error = errno;
            ::close(fd);
            if (error == EWOULDBLOCK)
                return Outcome::HeldByAnother;
        }
        failure_ = OSErrFromErrno(error);
    }
    return fds_.isEmpty() ? Outcome::Failed : Outcome::Acquired;
}

void SingleInstance::reportFailure() const {
    std::fprintf(stderr,
                 "kestrel-menu: cannot make the lock that keeps a second copy from "
                 "running (error %d); not starting\n",
                 int(failure_));
    QStringList folders;
    for (const QByteArray &folder : lockFolders())
        folders.append(u'“' + QFile::decodeName(folder) + u'”');
    const auto tr = [](const char *text) {
        return QCoreApplication::translate("SingleInstance", text);
    };
    platform::Alert alert;
    alert.status = failure_;
    alert.headline = tr("Kestrel Menu cannot start: it cannot make sure that only one copy of it "
                        "runs.");
    alert.explanation =
        tr("It keeps a small lock file in %1. Check that the folder belongs to you and that the "
           "disk is not full, then start Kestrel Menu again.")
            .arg(folders.isEmpty() ? tr("the session's run-time folder or your home folder")
                                   : folders.join(tr(" or ")));
    alert.details = tr("Error %1: %2").arg(failure_).arg(MakeErrorAlertTexts(failure_).message);
    platform::service<platform::Alerts>().showAlert(alert);
}

SingleInstance::~SingleInstance() {
    for (const int fd : fds_)
        ::close(fd);
}
