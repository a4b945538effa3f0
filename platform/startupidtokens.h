// Startup ids of the freedesktop startup-notification protocol, stamped with
// the time of the user's last press of a key or a mouse button.
#pragma once

#include "platform/activationtokens.h"

#include <QObject>

namespace platform {

class StartupIdTokens final : public QObject, public ActivationTokens {
public:
    StartupIdTokens();
    QByteArray newToken() override;
    unsigned long lastInputTime() const { return lastInputTime_; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    unsigned long lastInputTime_ = 0;
    int sequence_ = 0;
};

} // namespace platform
