#include "platform/doubles/fakealerts.h"

namespace platform {

void FakeAlerts::showErrorAlert(const QString &context, const QString &number,
                                const QString &message, const QString &explanation) {
    alerts.append({context, number, message, explanation});
}

void FakeAlerts::beep() {
    ++beeps;
}

} // namespace platform
