// Reading a folder for its menu. The file system may keep a reading waiting
// as long as it likes (a network mount that stopped answering: for ever), so
// the menus run readings only on threads of their own, never on the GUI's.
#pragma once

#include "foldermenus/folderentries.h"

#include <functional>
#include <stop_token>

namespace platform {

class FolderReader {
public:
    // One reading, ready to run on any thread. It holds all it needs, so it
    // may go on after the reader that made it is gone. A stop request means
    // nobody wants the answer any more.
    using Reading = std::function<FolderListing(std::stop_token stop)>;

    virtual ~FolderReader() = default;
    // How to read `folder` for the menu of `depth`.
    virtual Reading reading(const QByteArray &folder, std::int32_t depth) = 0;
};

// The file system itself.
class FileSystemFolderReader : public FolderReader {
public:
    Reading reading(const QByteArray &folder, std::int32_t depth) override {
        return [folder, depth](std::stop_token stop) {
            return ReadFolderEntries(folder, depth, std::move(stop));
        };
    }
};

} // namespace platform
