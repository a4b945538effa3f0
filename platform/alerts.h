// Alerts and beeps: the modal error alert and the system beep.
#pragma once

#include <QString>

namespace platform {

class Alerts {
public:
    virtual ~Alerts() = default;
    // Shows the error alert with its four texts and returns when it is dismissed.
    virtual void showErrorAlert(const QString &context, const QString &number,
                                const QString &message, const QString &explanation) = 0;
    virtual void beep() = 0;
};

} // namespace platform
