// The file manager over the session bus (org.freedesktop.FileManager1), with
// the default application for folders (through GIO) standing in for it.
#pragma once

#include "platform/filemanager.h"
#include "platform/procfsprocesses.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>

namespace platform {

inline constexpr const char *kFileManagerService = "org.freedesktop.FileManager1";
inline constexpr const char *kFileManagerPath = "/org/freedesktop/FileManager1";
inline constexpr const char *kFileManagerInterface = "org.freedesktop.FileManager1";
// How long a request may wait for the file manager before the bus gives up on it.
inline constexpr int kFileManagerTimeoutMs = 20000;

// The service's presence is asked once at start and then followed by watching
// its name on the bus, so that no choice ever waits for the bus to answer.
class DBusFileManager final : public FileManager {
public:
    explicit DBusFileManager(QDBusConnection connection = QDBusConnection::sessionBus());

    bool serviceExists() override;
    std::int64_t serviceProcess() override;
    QString serviceName() override;
    OSErr showFolders(const QList<QByteArray> &paths) override;
    OSErr showItems(const QList<QByteArray> &paths) override;
    OSErr showItemProperties(const QList<QByteArray> &paths) override;
    void setFailureHandler(std::function<void(const FailedRequest &)> handler) override;

    bool alternativeExists() override;
    std::int64_t alternativeProcess() override;
    OSErr alternativeOpenFolders(const QList<QByteArray> &paths) override;

    OSErr copyInto(const QByteArray &item, const QByteArray &folder) override;
    OSErr moveInto(const QByteArray &item, const QByteArray &folder) override;
    OSErr moveToTrash(const QByteArray &item) override;

private:
    OSErr send(const QString &method, const QList<QByteArray> &paths);
    // Asks the bus itself, without waiting; `answered` gets the reply later.
    void askBus(const QString &method, const QVariantList &arguments,
                std::function<void(const QDBusMessage &)> answered);
    void ownerChanged(const QString &owner);

    QDBusConnection connection_;
    QObject context_; // ends the bus's callbacks with this object
    QDBusServiceWatcher watcher_;
    QString owner_;            // the service's unique name on the bus, if it has an owner
    bool activatable_ = false; // whether the bus can start it
    std::int64_t pid_ = 0;
    QString name_;
    std::function<void(const FailedRequest &)> failureHandler_;
    ProcFsProcesses processes_;
};

} // namespace platform
