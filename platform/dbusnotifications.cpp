#include "platform/dbusnotifications.h"

#include <QDBusMessage>
#include <QVariantMap>

namespace platform {

DBusNotifications::DBusNotifications(QDBusConnection connection)
    : connection_(std::move(connection)) {}

bool DBusNotifications::notify(const QString &summary, const QString &body) {
    if (!connection_.isConnected())
        return false;
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"),
        QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    // Critical: what it tells (settings not saved) must not scroll away unseen.
    const QVariantMap hints{{QStringLiteral("urgency"), QVariant::fromValue(uchar(2))},
                            {QStringLiteral("desktop-entry"), QStringLiteral("kestrel-menu")}};
    message << QStringLiteral("Kestrel Menu") << uint(0) << QStringLiteral("kestrel-menu")
            << summary << body << QStringList() << hints << int(-1);
    // Sent without waiting for the reply: a stopped or missing server must
    // never hold the program up.
    return connection_.send(message);
}

} // namespace platform
