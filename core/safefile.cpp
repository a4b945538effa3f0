#include "core/safefile.h"

#include "core/errors.h"
#include "core/folders.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

int OpenRegularFile(const QByteArray &path, qint64 limit, OSErr *err) {
    // The file system resolves every link, ".." included, so what is opened is
    // what the links really lead to, never a guess from the text of the path.
    const QByteArray resolved = RealPath(path);
    if (resolved.isEmpty()) {
        *err = OSErrFromErrno(errno);
        return -1;
    }
    const int fd =
        ::open(resolved.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) {
        *err = OSErrFromErrno(errno);
        return -1;
    }
    struct stat info {};
    if (::fstat(fd, &info) != 0) {
        *err = OSErrFromErrno(errno);
    } else if (!S_ISREG(info.st_mode)) {
        *err = notAFileErr;
    } else if (info.st_size > limit) {
        *err = fsDataTooBigErr;
    } else {
        // Reads of a regular file never wait; the descriptor is made blocking
        // again only so that callers need not think of EAGAIN.
        ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
        *err = noErr;
        return fd;
    }
    ::close(fd);
    return -1;
}

OSErr ReadRegularFile(const QByteArray &path, qint64 limit, QByteArray *contents) {
    contents->clear();
    OSErr err = noErr;
    const int fd = OpenRegularFile(path, limit, &err);
    if (fd < 0)
        return err;
    QByteArray bytes;
    char buffer[16384];
    for (;;) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            err = OSErrFromErrno(errno);
            break;
        }
        if (got == 0)
            break;
        if (bytes.size() + got > limit) {
            err = fsDataTooBigErr;
            break;
        }
        bytes.append(buffer, qsizetype(got));
    }
    ::close(fd);
    if (err == noErr)
        *contents = std::move(bytes);
    return err;
}
