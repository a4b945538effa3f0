// Records alerts and beeps instead of showing or sounding them.
#pragma once

#include "platform/alerts.h"

#include <QList>

namespace platform {

class FakeAlerts : public Alerts {
public:
    int showAlert(const Alert &alert) override;
    void beep() override;

    QList<Alert> alerts;
    // The buttons the user chooses, alert by alert; once they run out, the default.
    QList<int> answers;
    int beeps = 0;
};

} // namespace platform
