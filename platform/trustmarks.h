// The desktop's mark on launchers the user has allowed to run, as file managers
// set it when asked to "allow launching": the file's metadata "trusted".
#pragma once

#include "core/types.h"

#include <QByteArray>

#include <functional>

namespace platform {

class TrustMarks {
public:
    virtual ~TrustMarks() = default;
    // Whether `path` carries the mark; false where the desktop keeps no marks.
    // Safe from any thread, and never waits on another program.
    virtual bool isMarkedTrusted(const QByteArray &path) = 0;
    // Marks `path` without waiting; `done` gets the status later, on this thread.
    virtual void markTrusted(const QByteArray &path, std::function<void(OSErr)> done) = 0;
};

} // namespace platform
