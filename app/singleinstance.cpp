#include "app/singleinstance.h"

#include "core/folders.h"

#include <QCryptographicHash>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

QByteArray SingleInstance::lockPath() {
    QByteArray preferences;
    if (FindPreferencesFolder(&preferences, false) != noErr)
        preferences = "-";
    // Locks live with the session's run-time files; the key is the preferences
    // folder, so a test or a second account with its own settings may run beside.
    QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    if (!runtime.startsWith('/'))
        runtime = "/tmp";
    const QByteArray key =
        QCryptographicHash::hash(preferences, QCryptographicHash::Sha256).toHex().left(16);
    return JoinPath(runtime,
                    "kestrel-menu-" + QByteArray::number(::getuid()) + '-' + key + ".lock");
}

bool SingleInstance::acquire() {
    fd_ = ::open(lockPath().constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd_ < 0)
        return true;
    if (::flock(fd_, LOCK_EX | LOCK_NB) == 0)
        return true;
    const bool held = errno == EWOULDBLOCK;
    ::close(fd_);
    fd_ = -1;
    return !held;
}

SingleInstance::~SingleInstance() {
    if (fd_ >= 0)
        ::close(fd_);
}
