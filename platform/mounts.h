// Mounted file systems: tells when one comes or goes.
#pragma once

#include <QByteArray>

#include <functional>

namespace platform {

enum class MountChange { Mounted = 1, Unmounted = 2 };

class Mounts {
public:
    virtual ~Mounts() = default;
    // Starts reporting changes; false when the mount table cannot be watched.
    virtual bool start(std::function<void(MountChange, const QByteArray &mountPoint)> handler) = 0;
    virtual void stop() = 0;
};

} // namespace platform
