#include "platform/mountinfo.h"

#include <QSocketNotifier>

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>

namespace platform {

namespace {

QByteArray ReadWhole(int fd) {
    QByteArray table;
    char buffer[8192];
    ::lseek(fd, 0, SEEK_SET);
    for (;;) {
        const ssize_t count = ::read(fd, buffer, sizeof buffer);
        if (count <= 0)
            break;
        table.append(buffer, count);
    }
    return table;
}

} // namespace

QByteArray DecodeOctalEscapes(const QByteArray &field) {
    QByteArray decoded;
    decoded.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            const QByteArray digits = field.mid(i + 1, 3);
            if (std::all_of(digits.begin(), digits.end(),
                            [](char c) { return c >= '0' && c <= '7'; })) {
                decoded += char(digits.toInt(nullptr, 8));
                i += 3;
                continue;
            }
        }
        decoded += field[i];
    }
    return decoded;
}

QList<MountEntry> ParseMountInfo(const QByteArray &table) {
    QList<MountEntry> entries;
    for (const QByteArray &line : table.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() < 5)
            continue;
        entries.append({fields[0], DecodeOctalEscapes(fields[4])});
    }
    return entries;
}

MountInfoWatcher::MountInfoWatcher(QByteArray tablePath) : tablePath_(std::move(tablePath)) {}

MountInfoWatcher::~MountInfoWatcher() {
    stop();
}

bool MountInfoWatcher::start(std::function<void(MountChange, const QByteArray &)> handler) {
    stop();
    fd_ = ::open(tablePath_.constData(), O_RDONLY | O_CLOEXEC);
    if (fd_ < 0)
        return false;
    handler_ = std::move(handler);
    known_ = ParseMountInfo(ReadWhole(fd_));
    // The kernel flags the table as exceptional (POLLPRI) whenever it changes.
    notifier_ = std::make_unique<QSocketNotifier>(fd_, QSocketNotifier::Exception);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, this, [this] { reread(); });
    return true;
}

void MountInfoWatcher::stop() {
    notifier_.reset();
    if (fd_ >= 0)
        ::close(fd_);
    fd_ = -1;
}

void MountInfoWatcher::reread() {
    const QList<MountEntry> now = ParseMountInfo(ReadWhole(fd_));
    const QList<MountEntry> before = std::exchange(known_, now);
    for (const MountEntry &entry : now) {
        if (!before.contains(entry))
            handler_(MountChange::Mounted, entry.mountPoint);
    }
    for (const MountEntry &entry : before) {
        if (!now.contains(entry))
            handler_(MountChange::Unmounted, entry.mountPoint);
    }
}

} // namespace platform
