// Records notifications instead of showing them.
#pragma once

#include "platform/notifications.h"

#include <QList>
#include <QStringList>

namespace platform {

class FakeNotifications : public Notifications {
public:
    bool notify(const QString &summary, const QString &body) override {
        sent.append({summary, body});
        return true;
    }
    QList<QStringList> sent; // summary and body of each
};

} // namespace platform
