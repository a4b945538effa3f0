#include "platform/settingsportal.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcPortal, "kestrel.look", QtWarningMsg)

namespace platform {

namespace {
const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString kAppearance = QStringLiteral("org.freedesktop.appearance");
const QString kColourScheme = QStringLiteral("color-scheme");
} // namespace

SettingsPortal::SettingsPortal(std::function<void()> changed) : changed_(std::move(changed)) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    // Taken as the whole message: the bus will not hand a variant to a slot.
    if (!bus.connect(kService, kPath, kInterface, QStringLiteral("SettingChanged"), this,
                     SLOT(settingChanged(QDBusMessage))))
        qCWarning(lcPortal, "cannot follow the settings portal's changes");
    QDBusMessage readAll =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("ReadAll"));
    readAll << QStringList{kAppearance};
    // Not waited for: the bus may have to start the portal first.
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(readAll), this);
    connect(
        watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *call) {
            call->deleteLater();
            const QDBusMessage reply = call->reply();
            if (reply.type() != QDBusMessage::ReplyMessage) {
                qCInfo(lcPortal, "no settings portal: %s", qPrintable(reply.errorMessage()));
                return;
            }
            const auto groups = qdbus_cast<QMap<QString, QVariantMap>>(reply.arguments().value(0));
            take(groups.value(kAppearance).value(kColourScheme));
        });
}

void SettingsPortal::settingChanged(const QDBusMessage &message) {
    const QList<QVariant> arguments = message.arguments();
    if (arguments.value(0).toString() == kAppearance &&
        arguments.value(1).toString() == kColourScheme)
        take(arguments.value(2));
}

void SettingsPortal::take(const QVariant &value) {
    // Older portals wrap the value in one variant more.
    const QVariant inner =
        value.canConvert<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value;
    bool known = false;
    const uint scheme = inner.toUInt(&known);
    if (!known || scheme > uint(ColourScheme::Light))
        return;
    scheme_ = ColourScheme(scheme);
    qCInfo(lcPortal, "settings portal: colour scheme %u", scheme);
    if (changed_)
        changed_();
}

} // namespace platform
