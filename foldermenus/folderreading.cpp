#include "foldermenus/folderreading.h"

#include "platform/folderreader.h"
#include "platform/service.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

Q_DECLARE_LOGGING_CATEGORY(lcFolderEntries)

struct FolderReading::Job {
    std::pair<QByteArray, std::int32_t> key;
    platform::FolderReader::Reading reading;
    // Everything below is shared with the reading's thread.
    std::mutex mutex;
    std::condition_variable answered;
    std::stop_source stop;
    std::shared_ptr<const FolderListing> listing;
    std::vector<FolderReading *> waiting;

    // The answer goes to every reading that still waits for it, each in its
    // own context's thread. Called with the lock held, so that none of them
    // can go meanwhile.
    void deliver() {
        for (FolderReading *reading : waiting)
            reading->post();
    }
};

namespace {

using Job = FolderReading::Job;

// The readings under way, by folder and depth, and how many threads run.
// Never destroyed: a thread stuck in the file system may outlive main().
struct Registry {
    std::mutex mutex;
    std::condition_variable idle;
    std::map<std::pair<QByteArray, std::int32_t>, std::weak_ptr<Job>> running;
    int threads = 0;
};

Registry &Readings() {
    static auto *registry = new Registry;
    return *registry;
}

void Finish(const std::shared_ptr<Job> &job) {
    Registry &registry = Readings();
    std::lock_guard lock(registry.mutex);
    const auto found = registry.running.find(job->key);
    if (found != registry.running.end() && found->second.lock() == job)
        registry.running.erase(found);
    --registry.threads;
    registry.idle.notify_all();
}

void Run(const std::shared_ptr<Job> &job) {
    for (;;) {
        std::stop_token stop;
        {
            std::lock_guard lock(job->mutex);
            stop = job->stop.get_token();
        }
        FolderListing listing = job->reading(stop);
        std::lock_guard lock(job->mutex);
        if (stop.stop_requested()) {
            if (job->waiting.empty())
                break;                      // nobody wants the answer
            job->stop = std::stop_source(); // wanted again meanwhile: read afresh
            continue;
        }
        job->listing = std::make_shared<const FolderListing>(std::move(listing));
        job->answered.notify_all();
        job->deliver();
        break;
    }
    Finish(job);
}

void WaitForReadingsAtExit() {
    // A reading stuck in a hung mount is left behind; quitting never waits long.
    FolderReadingsFinished(250);
}

} // namespace

FolderReading::FolderReading(const QByteArray &folder, std::int32_t depth) {
    static const bool cleanedUpAtExit = [] {
        qAddPostRoutine(WaitForReadingsAtExit);
        return true;
    }();
    Q_UNUSED(cleanedUpAtExit);

    Registry &registry = Readings();
    std::lock_guard registryLock(registry.mutex);
    const auto key = std::make_pair(folder, depth);
    if (const auto found = registry.running.find(key); found != registry.running.end())
        job_ = found->second.lock();
    if (job_ != nullptr) {
        // One that has answered already answered too early for this opening.
        std::lock_guard lock(job_->mutex);
        if (job_->listing != nullptr)
            job_.reset();
    }
    if (job_ == nullptr) {
        job_ = std::make_shared<Job>();
        job_->key = key;
        // Code run without the platform's services (tests of other parts)
        // reads the file system itself.
        platform::FileSystemFolderReader fileSystem;
        job_->reading = platform::hasService<platform::FolderReader>()
                            ? platform::service<platform::FolderReader>().reading(folder, depth)
                            : fileSystem.reading(folder, depth);
        try {
            std::thread([job = job_] { Run(job); }).detach();
            registry.running[key] = job_;
            ++registry.threads;
        } catch (const std::system_error &error) {
            qCWarning(lcFolderEntries, "cannot start reading %s: %s",
                      qPrintable(QFile::decodeName(folder)), error.what());
            FolderListing failed;
            failed.status = memFullErr;
            job_->listing = std::make_shared<const FolderListing>(std::move(failed));
        }
    }
    std::lock_guard lock(job_->mutex);
    job_->waiting.push_back(this);
}

FolderReading::~FolderReading() {
    std::lock_guard lock(job_->mutex);
    std::erase(job_->waiting, this);
    if (job_->waiting.empty() && job_->listing == nullptr)
        job_->stop.request_stop();
}

bool FolderReading::waitFor(int timeoutMs) {
    std::unique_lock lock(job_->mutex);
    return job_->answered.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                                   [this] { return job_->listing != nullptr; });
}

std::shared_ptr<const FolderListing> FolderReading::listing() const {
    std::lock_guard lock(job_->mutex);
    return job_->listing;
}

void FolderReading::whenReady(QObject *context, std::function<void()> ready) {
    std::lock_guard lock(job_->mutex);
    context_ = context;
    ready_ = std::make_shared<std::function<void()>>(std::move(ready));
    if (job_->listing != nullptr)
        post();
}

void FolderReading::post() {
    if (context_ == nullptr)
        return;
    // The call holds the callback itself, which may end this reading.
    QMetaObject::invokeMethod(
        context_,
        [ready = std::weak_ptr(ready_)] {
            if (const auto call = ready.lock())
                (*call)();
        },
        Qt::QueuedConnection);
}

bool FolderReadingsFinished(int timeoutMs) {
    Registry &registry = Readings();
    std::unique_lock lock(registry.mutex);
    return registry.idle.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                                  [&] { return registry.threads == 0; });
}
