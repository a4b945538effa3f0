// The kernel's mount table (/proc/self/mountinfo), watched for changes.
#pragma once

#include "platform/mounts.h"

#include <QByteArray>
#include <QList>
#include <QObject>

#include <memory>

class QSocketNotifier;

namespace platform {

struct MountEntry {
    QByteArray id;         // the kernel's mount id: the same path mounted again is a new mount
    QByteArray mountPoint; // octal escapes decoded
    friend bool operator==(const MountEntry &, const MountEntry &) = default;
};

QList<MountEntry> ParseMountInfo(const QByteArray &table);
// A field of the table: space, tab, newline and backslash come as three octal digits.
QByteArray DecodeOctalEscapes(const QByteArray &field);

class MountInfoWatcher final : public QObject, public Mounts {
public:
    explicit MountInfoWatcher(QByteArray tablePath = "/proc/self/mountinfo");
    ~MountInfoWatcher() override;
    bool start(std::function<void(MountChange, const QByteArray &)> handler) override;
    void stop() override;

private:
    void reread();

    QByteArray tablePath_;
    int fd_ = -1;
    std::unique_ptr<QSocketNotifier> notifier_;
    QList<MountEntry> known_;
    std::function<void(MountChange, const QByteArray &)> handler_;
};

} // namespace platform
