// Answers the file dialog in front, if one is: with the path `answer` gives for
// it, or cancelled when that is empty.
#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>

#include <functional>

inline void AnswerFrontFileDialog(const std::function<QByteArray(QFileDialog *)> &answer) {
    auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
    if (dialog == nullptr)
        return;
    const QByteArray path = answer(dialog);
    if (path.isEmpty())
        return dialog->reject();
    dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))
        ->setText(QFile::decodeName(path));
    auto *buttons = dialog->findChild<QDialogButtonBox *>();
    for (QAbstractButton *button : buttons->buttons()) {
        if (buttons->buttonRole(button) == QDialogButtonBox::AcceptRole)
            button->click();
    }
}
