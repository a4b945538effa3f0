#include "platform/programbus.h"

#include "kestrelmenuadaptor.h"
#include "platform/busdaemon.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDeadlineTimer>
#include <QLoggingCategory>
#include <QThread>

Q_LOGGING_CATEGORY(lcProgramBus, "kestrel.bus", QtWarningMsg)

namespace platform {

ProgramBus::ProgramBus(std::function<bool(std::uint32_t)> popUpMenu, QDBusConnection connection)
    : popUpMenu_(std::move(popUpMenu)), connection_(std::move(connection)) {
    new KestrelMenuAdaptor(this);
    if (!connection_.registerObject(QLatin1String(kProgramPath), this)) {
        qCWarning(lcProgramBus, "not on the session bus: %s",
                  qPrintable(connection_.lastError().message()));
        return;
    }
    // Asked for without waiting: the bus may be slow, the titles are up.
    constexpr uint kDoNotQueue = 4;
    auto *watcher = new QDBusPendingCallWatcher(
        connection_.asyncCall(BusDaemonMessage(QStringLiteral("RequestName"),
                                               {QLatin1String(kProgramService), kDoNotQueue})),
        this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [](QDBusPendingCallWatcher *call) {
        const QDBusPendingReply<uint> reply = *call;
        constexpr uint kPrimaryOwner = 1;
        if (reply.isValid() && reply.value() == kPrimaryOwner)
            qCInfo(lcProgramBus, "owns %s on the session bus", kProgramService);
        else
            qCWarning(lcProgramBus, "%s is another program's: the menu cannot be asked for",
                      kProgramService);
        call->deleteLater();
    });
}

ProgramBus::~ProgramBus() {
    connection_.unregisterObject(QLatin1String(kProgramPath));
    connection_.send(
        BusDaemonMessage(QStringLiteral("ReleaseName"), {QLatin1String(kProgramService)}));
}

void ProgramBus::PopUpMenu(uint title) {
    qCInfo(lcProgramBus, "menu of title %u asked for", title);
    if (!popUpMenu_(title))
        sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("There is no title %1.").arg(title));
}

OSErr AskRunningCopyToPopUpMenu(int timeoutMs) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return connectionInvalid;
    const QDeadlineTimer deadline(timeoutMs);
    while (!bus.interface()->isServiceRegistered(QLatin1String(kProgramService))) {
        if (deadline.hasExpired())
            return connectionInvalid;
        QThread::msleep(50);
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QLatin1String(kProgramService), QLatin1String(kProgramPath),
        QLatin1String(kProgramInterface), QStringLiteral("PopUpMenu"));
    call << uint(1);
    const QDBusMessage reply =
        bus.call(call, QDBus::Block, int(qMax<qint64>(1, deadline.remainingTime())));
    return reply.type() == QDBusMessage::ReplyMessage ? OSErr(noErr) : OSErr(connectionInvalid);
}

} // namespace platform
