#include "platform/messageboxalerts.h"

#include <QApplication>
#include <QMessageBox>

namespace platform {

void MessageBoxAlerts::showErrorAlert(const QString &context, const QString &number,
                                      const QString &message, const QString &explanation) {
    QMessageBox box(QMessageBox::Warning, QApplication::translate("Alerts", "Kestrel Menu"),
                    context.isEmpty() ? message : context + u' ' + message, QMessageBox::Ok);
    box.setInformativeText(explanation + QStringLiteral("\n\n") +
                           QApplication::translate("Alerts", "(Error %1)").arg(number));
    box.setTextFormat(Qt::PlainText);
    box.setObjectName(QStringLiteral("errorAlert"));
    box.exec();
}

void MessageBoxAlerts::beep() {
    QApplication::beep();
}

} // namespace platform
