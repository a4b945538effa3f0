// Reading a folder for a menu away from the GUI thread, so that a folder on a
// mount that hangs holds up nothing but its own menu.
#pragma once

#include "foldermenus/folderentries.h"

#include <QByteArray>
#include <QObject>

#include <functional>
#include <memory>

class FolderReading {
public:
    // Starts reading `folder` for the menu of `depth` (through the platform's
    // folder reader), or joins a reading of it for that depth still under way:
    // a hung folder opened again and again waits on one thread, not many.
    FolderReading(const QByteArray &folder, std::int32_t depth);
    // Abandons the reading: its answer is never delivered here, and the reading
    // stops early when nobody else waits for it.
    ~FolderReading();
    FolderReading(const FolderReading &) = delete;
    FolderReading &operator=(const FolderReading &) = delete;

    // Waits up to `timeoutMs` for the answer; true once it is there.
    bool waitFor(int timeoutMs);
    // The answer; null until it is there.
    std::shared_ptr<const FolderListing> listing() const;
    // Calls `ready` in `context`'s thread once the answer is there (queued,
    // also when it already is), unless this reading is abandoned first.
    void whenReady(QObject *context, std::function<void()> ready);

    struct Job;

private:
    // Posts the answer to the context; called with the job's lock held.
    void post();

    std::shared_ptr<Job> job_;
    QObject *context_ = nullptr;
    std::shared_ptr<std::function<void()>> ready_;
};

// Waits up to `timeoutMs` until no reading thread runs; true when none does.
bool FolderReadingsFinished(int timeoutMs);
