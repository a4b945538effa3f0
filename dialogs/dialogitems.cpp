#include "dialogs/dialogitems.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>

ItemDialog::ItemDialog(QWidget *parent) : QDialog(parent) {}

void ItemDialog::registerItem(DialogItemIndex item, QWidget *control) {
    items_.insert(item, control);
}

DialogItemIndex ItemDialog::itemNumber(const QWidget *control) const {
    for (auto it = items_.cbegin(); it != items_.cend(); ++it) {
        if (it.value() == control)
            return it.key();
    }
    return 0;
}

void ItemDialog::setUserItemProc(DialogItemIndex item, UserItemProc proc) {
    procs_.insert(item, std::move(proc));
    if (QWidget *control = items_.value(item))
        control->update();
}

void SetItemHandle(DialogRef dialog, DialogItemIndex item, UserItemProc proc) {
    dialog->setUserItemProc(item, std::move(proc));
}

QWidget *GetItemHandle(DialogRef dialog, DialogItemIndex item) {
    return dialog->item(item);
}

void GetItemRect(DialogRef dialog, DialogItemIndex item, Rect *rect) {
    QWidget *control = dialog->item(item);
    if (control == nullptr)
        return;
    const QRect area(control->mapTo(dialog, QPoint(0, 0)), control->size());
    *rect = {std::int16_t(area.top()), std::int16_t(area.left()),
             std::int16_t(area.top() + area.height()), std::int16_t(area.left() + area.width())};
}

std::int16_t GetItemValue(DialogRef dialog, DialogItemIndex item) {
    if (auto *box = qobject_cast<QCheckBox *>(dialog->item(item)))
        return std::int16_t(box->checkState() == Qt::PartiallyChecked ? 2 : box->isChecked());
    if (auto *button = qobject_cast<QAbstractButton *>(dialog->item(item)))
        return button->isChecked() ? 1 : 0;
    return 0;
}

void SetItemValue(DialogRef dialog, DialogItemIndex item, std::int16_t value) {
    if (auto *box = qobject_cast<QCheckBox *>(dialog->item(item))) {
        box->setCheckState(value == 0   ? Qt::Unchecked
                           : value == 2 ? Qt::PartiallyChecked
                                        : Qt::Checked);
    } else if (auto *button = qobject_cast<QAbstractButton *>(dialog->item(item))) {
        button->setChecked(value != 0);
    }
}

void SetItemEnabled(DialogRef dialog, DialogItemIndex item, bool enabled) {
    if (QWidget *control = dialog->item(item))
        control->setEnabled(enabled);
}

bool ToggleItem(DialogRef dialog, DialogItemIndex item) {
    const bool on = GetItemValue(dialog, item) == 0;
    SetItemValue(dialog, item, on ? 1 : 0);
    return on;
}

void GetItemText(DialogRef dialog, DialogItemIndex item, Str255 text) {
    QString value;
    if (auto *field = qobject_cast<QLineEdit *>(dialog->item(item)))
        value = field->text();
    else if (auto *label = qobject_cast<QLabel *>(dialog->item(item)))
        value = label->text();
    else if (auto *button = qobject_cast<QAbstractButton *>(dialog->item(item)))
        value = button->text();
    const QByteArray bytes = value.toUtf8();
    SetPString(text, std::string_view(bytes.constData(), std::size_t(bytes.size())));
}

long GetItemNumber(DialogRef dialog, DialogItemIndex item) {
    Str255 text;
    GetItemText(dialog, item, text);
    return StringToNum(text);
}

void SetItemText(DialogRef dialog, DialogItemIndex item, ConstStr255Param text) {
    const std::string_view bytes = PStringView(text);
    const QString value = QString::fromUtf8(bytes.data(), qsizetype(bytes.size()));
    if (auto *field = qobject_cast<QLineEdit *>(dialog->item(item)))
        field->setText(value);
    else if (auto *label = qobject_cast<QLabel *>(dialog->item(item)))
        label->setText(value);
    else if (auto *button = qobject_cast<QAbstractButton *>(dialog->item(item)))
        button->setText(value);
}

void SetItemNumber(DialogRef dialog, DialogItemIndex item, long value) {
    Str255 text;
    NumToString(value, text);
    SetItemText(dialog, item, text);
}

long StringToNum(ConstStr255Param text) {
    const std::string_view digits = PStringView(text);
    std::size_t i = 0;
    bool negative = false;
    if (!digits.empty() && (digits[0] == '-' || digits[0] == '+')) {
        negative = digits[0] == '-';
        i = 1;
    }
    std::uint32_t value = 0; // wraps like the 32-bit original
    for (; i < digits.size(); ++i)
        value = value * 10u + std::uint32_t(static_cast<unsigned char>(digits[i]) - '0');
    if (negative)
        value = 0u - value;
    return long(std::int32_t(value));
}

void NumToString(long value, Str255 text) {
    const QByteArray digits = QByteArray::number(qint64(std::int32_t(value)));
    SetPString(text, std::string_view(digits.constData(), std::size_t(digits.size())));
}
