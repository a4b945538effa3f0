// A folder on a mount that stopped answering: every reading waits until the
// double goes, as if the server came back then.
#pragma once

#include "platform/folderreader.h"

#include <condition_variable>
#include <memory>
#include <mutex>

namespace platform {

class HungFolderReader : public FolderReader {
public:
    ~HungFolderReader() override {
        std::lock_guard lock(state_->mutex);
        state_->released = true;
        state_->changed.notify_all();
    }
    Reading reading(const QByteArray &, std::int32_t) override {
        return [state = state_](std::stop_token) {
            std::unique_lock lock(state->mutex);
            ++state->waiting;
            state->changed.wait(lock, [&] { return state->released; });
            return FolderListing{{}, 0, ioErr};
        };
    }
    // How many readings have begun to wait.
    int waiting() const {
        std::lock_guard lock(state_->mutex);
        return state_->waiting;
    }

private:
    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        bool released = false;
        int waiting = 0;
    };
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

} // namespace platform
