#include "platform/doubles/fakealerts.h"

namespace platform {

int FakeAlerts::showAlert(const Alert &alert) {
    alerts.append(alert);
    return answers.isEmpty() ? alert.defaultButton : answers.takeFirst();
}

void FakeAlerts::beep() {
    ++beeps;
}

} // namespace platform
