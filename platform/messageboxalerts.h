// Alerts shown as modal message boxes, beeps through the display.
#pragma once

#include "platform/alerts.h"

namespace platform {

class MessageBoxAlerts final : public Alerts {
public:
    void showErrorAlert(const QString &context, const QString &number, const QString &message,
                        const QString &explanation) override;
    void beep() override;
};

} // namespace platform
