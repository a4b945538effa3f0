#include "platform/startupidtokens.h"

#include <QCoreApplication>
#include <QInputEvent>
#include <QSysInfo>

#include <unistd.h>

namespace platform {

StartupIdTokens::StartupIdTokens() {
    if (QCoreApplication::instance() != nullptr)
        QCoreApplication::instance()->installEventFilter(this);
}

bool StartupIdTokens::eventFilter(QObject *watched, QEvent *event) {
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        // On X11 this is the server's time of the event, which the window
        // manager compares with its own.
        if (const auto time = static_cast<QInputEvent *>(event)->timestamp(); time != 0)
            lastInputTime_ = time;
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

QByteArray StartupIdTokens::newToken() {
    if (lastInputTime_ == 0)
        return {};
    return "kestrel-menu-" + QByteArray::number(::getpid()) + '-' +
           QSysInfo::machineHostName().toUtf8() + '-' + QByteArray::number(++sequence_) + "_TIME" +
           QByteArray::number(qulonglong(lastInputTime_));
}

} // namespace platform
