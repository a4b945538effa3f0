// The file manager over the session bus (org.freedesktop.FileManager1), with
// the default application for folders (through GIO) standing in for it.
#pragma once

#include "platform/filemanager.h"
#include "platform/procfsprocesses.h"

#include <QDBusConnection>
#include <QString>

namespace platform {

inline constexpr const char *kFileManagerService = "org.freedesktop.FileManager1";
inline constexpr const char *kFileManagerPath = "/org/freedesktop/FileManager1";
inline constexpr const char *kFileManagerInterface = "org.freedesktop.FileManager1";
// How long a request may wait for the file manager before the bus gives up on it.
inline constexpr int kFileManagerTimeoutMs = 20000;

class DBusFileManager final : public FileManager {
public:
    explicit DBusFileManager(QDBusConnection connection = QDBusConnection::sessionBus());

    bool serviceExists() override;
    std::int64_t serviceProcess() override;
    OSErr showFolders(const QList<QByteArray> &paths) override;
    OSErr showItems(const QList<QByteArray> &paths) override;
    OSErr showItemProperties(const QList<QByteArray> &paths) override;

    bool alternativeExists() override;
    std::int64_t alternativeProcess() override;
    OSErr alternativeOpenFolders(const QList<QByteArray> &paths) override;

    OSErr copyInto(const QByteArray &item, const QByteArray &folder) override;
    OSErr moveInto(const QByteArray &item, const QByteArray &folder) override;

private:
    OSErr send(const QString &method, const QList<QByteArray> &paths);

    QDBusConnection connection_;
    ProcFsProcesses processes_;
};

// "file://" and the path's bytes, percent-encoded byte by byte, so that any
// name (spaces, "#", "%", line breaks, bytes that are not UTF-8) comes back
// exactly when the address is decoded.
QByteArray FileUriFromPath(const QByteArray &path);

} // namespace platform
