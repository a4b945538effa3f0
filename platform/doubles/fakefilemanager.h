// A file manager that records the requests made to it.
#pragma once

#include "platform/filemanager.h"

#include <QList>

namespace platform {

class FakeFileManager : public FileManager {
public:
    struct Request {
        QByteArray what; // "ShowFolders", "ShowItems", "ShowItemProperties",
                         // "AlternativeOpen", "CopyInto", "MoveInto", "Trash"
        QList<QByteArray> paths;
        friend bool operator==(const Request &, const Request &) = default;
    };

    bool serviceExists() override { return hasService; }
    std::int64_t serviceProcess() override { return servicePid; }
    QString serviceName() override { return QStringLiteral("Fake Files"); }
    void setFailureHandler(std::function<void(const FailedRequest &)> handler) override {
        failed = std::move(handler);
    }
    OSErr showFolders(const QList<QByteArray> &paths) override {
        return record("ShowFolders", paths);
    }
    OSErr showItems(const QList<QByteArray> &paths) override { return record("ShowItems", paths); }
    OSErr showItemProperties(const QList<QByteArray> &paths) override {
        return record("ShowItemProperties", paths);
    }
    bool alternativeExists() override { return hasAlternative; }
    std::int64_t alternativeProcess() override { return alternativePid; }
    OSErr alternativeOpenFolders(const QList<QByteArray> &paths) override {
        return record("AlternativeOpen", paths);
    }
    OSErr copyInto(const QByteArray &item, const QByteArray &folder) override {
        return record("CopyInto", {item, folder});
    }
    OSErr moveInto(const QByteArray &item, const QByteArray &folder) override {
        return record("MoveInto", {item, folder});
    }
    OSErr moveToTrash(const QByteArray &item) override { return record("Trash", {item}); }

    bool hasService = true;
    std::int64_t servicePid = 0;
    bool hasAlternative = false;
    std::int64_t alternativePid = 0;
    // Requests fail with this status from the `failFrom`-th on (counted from 1).
    OSErr failure = noErr;
    int failFrom = 1;
    QList<Request> requests;
    std::function<void(const FailedRequest &)> failed; // the handler set

private:
    OSErr record(const char *what, const QList<QByteArray> &paths) {
        requests.append({what, paths});
        return requests.size() >= failFrom ? failure : OSErr(noErr);
    }
};

} // namespace platform
