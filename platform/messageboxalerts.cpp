#include "platform/messageboxalerts.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

namespace platform {

int MessageBoxAlerts::showAlert(const Alert &alert) {
    QMessageBox box(QMessageBox::Warning, QApplication::translate("Alerts", "Kestrel Menu"),
                    alert.headline);
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(alert.explanation);
    box.setDetailedText(alert.details);
    box.setObjectName(QStringLiteral("errorAlert"));
    const QStringList texts = alert.buttons.isEmpty()
                                  ? QStringList{QApplication::translate("Alerts", "OK")}
                                  : alert.buttons;
    QList<QPushButton *> buttons;
    for (const QString &text : texts)
        buttons.append(box.addButton(text, QMessageBox::ActionRole));
    box.setDefaultButton(buttons.value(alert.defaultButton, buttons.first()));
    box.setEscapeButton(buttons.value(alert.escapeButton, buttons.first()));
    box.exec();
    const auto chosen = buttons.indexOf(qobject_cast<QPushButton *>(box.clickedButton()));
    return chosen < 0 ? int(alert.escapeButton) : int(chosen);
}

void MessageBoxAlerts::beep() {
    QApplication::beep();
}

} // namespace platform
