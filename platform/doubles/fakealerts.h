// Records alerts and beeps instead of showing or sounding them.
#pragma once

#include "platform/alerts.h"

#include <QList>
#include <QStringList>

namespace platform {

class FakeAlerts : public Alerts {
public:
    struct Shown {
        QString context, number, message, explanation;
    };
    void showErrorAlert(const QString &context, const QString &number, const QString &message,
                        const QString &explanation) override;
    void beep() override;

    QList<Shown> alerts;
    int beeps = 0;
};

} // namespace platform
