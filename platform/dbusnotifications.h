// Notifications through the desktop's notification server
// (org.freedesktop.Notifications on the session bus).
#pragma once

#include "platform/notifications.h"

#include <QDBusConnection>

namespace platform {

class DBusNotifications final : public Notifications {
public:
    // The connection is made at start, while the bus answers, so that a
    // message sent at quit never waits on connecting.
    explicit DBusNotifications(QDBusConnection connection = QDBusConnection::sessionBus());

    bool notify(const QString &summary, const QString &body) override;

private:
    QDBusConnection connection_;
};

} // namespace platform
