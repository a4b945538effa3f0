// Desktop notifications: a passing message for what the program must tell
// when no window of its own may wait for the user, as while it quits.
#pragma once

#include <QString>

namespace platform {

class Notifications {
public:
    virtual ~Notifications() = default;
    // Hands the message to the desktop and returns at once, without waiting
    // for it to be shown; false when it could not even be sent.
    virtual bool notify(const QString &summary, const QString &body) = 0;
};

} // namespace platform
