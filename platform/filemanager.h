// The desktop's file manager: the session's org.freedesktop.FileManager1
// service, and the default application for folders that stands in for it
// when the session has none.
#pragma once

#include "core/types.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstdint>
#include <functional>

namespace platform {

// A request to the service that failed after it was sent: connectionInvalid
// when it never reached the file manager, errAETimeout when the file manager
// did not answer in time, errAEEventFailed when it refused.
struct FailedRequest {
    QByteArray method; // "ShowFolders", "ShowItems", "ShowItemProperties"
    QList<QByteArray> paths;
    OSErr status = noErr;
};

class FileManager {
public:
    virtual ~FileManager() = default;

    // Whether the service has an owner on the bus or the bus can start it, as
    // last seen: the bus is never asked on the spot.
    virtual bool serviceExists() = 0;
    // The process that owns the service; 0 while none does or it is not known.
    virtual std::int64_t serviceProcess() = 0;
    // The service's program by name, for messages ("Files"); empty while unknown.
    virtual QString serviceName() = 0;
    // Requests to the service, sent without waiting for the answer, with the
    // user's activation token. Items are absolute paths. connectionInvalid
    // when the request cannot be sent; later failures go to the handler.
    virtual OSErr showFolders(const QList<QByteArray> &paths) = 0;
    virtual OSErr showItems(const QList<QByteArray> &paths) = 0;
    virtual OSErr showItemProperties(const QList<QByteArray> &paths) = 0;
    // Called, from the event loop, for each request that fails once sent.
    virtual void setFailureHandler(std::function<void(const FailedRequest &)> handler) = 0;

    // Whether the desktop has a default application for folders.
    virtual bool alternativeExists() = 0;
    // A running process of that application; 0 when none runs.
    virtual std::int64_t alternativeProcess() = 0;
    // Opens folders in the default application for folders.
    virtual OSErr alternativeOpenFolders(const QList<QByteArray> &paths) = 0;

    // Copies or moves `item` into `folder`, keeping its name; dupFNErr when the
    // name is taken there.
    virtual OSErr copyInto(const QByteArray &item, const QByteArray &folder) = 0;
    virtual OSErr moveInto(const QByteArray &item, const QByteArray &folder) = 0;
    // Moves `item` itself (a link, not what it points to) to the desktop's
    // trash, where the file manager can restore it from.
    virtual OSErr moveToTrash(const QByteArray &item) = 0;
};

} // namespace platform
