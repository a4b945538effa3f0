// Messages to the session bus itself (org.freedesktop.DBus): who owns a name,
// which names can be started, asking for a name and giving it up.
#pragma once

#include <QDBusMessage>
#include <QVariantList>

namespace platform {

inline QDBusMessage BusDaemonMessage(const QString &method, const QVariantList &arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), method);
    message.setArguments(arguments);
    return message;
}

} // namespace platform
