// Alerts shown as modal message boxes, beeps through the display.
#pragma once

#include "platform/alerts.h"

namespace platform {

class MessageBoxAlerts final : public Alerts {
public:
    int showAlert(const Alert &alert) override;
    void beep() override;
};

} // namespace platform
