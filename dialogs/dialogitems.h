// Dialog items by number: dialog code reads and sets its controls through these
// routines and never handles the widgets' kinds itself.
#pragma once

#include "core/types.h"

#include <QDialog>
#include <QHash>

#include <functional>

using DialogItemIndex = std::int16_t;

class ItemDialog;
using DialogRef = ItemDialog *;
// Draws a user item into its rectangle.
using UserItemProc = std::function<void(DialogRef dialog, DialogItemIndex item)>;

// A dialog whose controls are registered under their item numbers, 1-based.
class ItemDialog : public QDialog {
    Q_OBJECT
public:
    explicit ItemDialog(QWidget *parent = nullptr);

    void registerItem(DialogItemIndex item, QWidget *control);
    QWidget *item(DialogItemIndex item) const { return items_.value(item); }
    DialogItemIndex itemNumber(const QWidget *control) const;

    // The drawing procedure of a user item (see SetItemHandle).
    UserItemProc userItemProc(DialogItemIndex item) const { return procs_.value(item); }
    void setUserItemProc(DialogItemIndex item, UserItemProc proc);

private:
    QHash<DialogItemIndex, QWidget *> items_;
    QHash<DialogItemIndex, UserItemProc> procs_;
};

// Installs the drawing procedure of a user item.
void SetItemHandle(DialogRef dialog, DialogItemIndex item, UserItemProc proc);
QWidget *GetItemHandle(DialogRef dialog, DialogItemIndex item);
// The item's rectangle in the dialog's coordinates.
void GetItemRect(DialogRef dialog, DialogItemIndex item, Rect *rect);
// A button's value: 0 off, 1 on, 2 mixed (check boxes only).
std::int16_t GetItemValue(DialogRef dialog, DialogItemIndex item);
void SetItemValue(DialogRef dialog, DialogItemIndex item, std::int16_t value);
// Greys a control out, or makes it active again.
void SetItemEnabled(DialogRef dialog, DialogItemIndex item, bool enabled);
// 0 becomes 1 and anything else 0; returns the new value.
bool ToggleItem(DialogRef dialog, DialogItemIndex item);
void GetItemText(DialogRef dialog, DialogItemIndex item, Str255 text);
// The item's text as a number, with no validation (see StringToNum).
long GetItemNumber(DialogRef dialog, DialogItemIndex item);
void SetItemText(DialogRef dialog, DialogItemIndex item, ConstStr255Param text);
void SetItemNumber(DialogRef dialog, DialogItemIndex item, long value);

// Decimal text to a 32-bit number: an optional sign, then every byte taken as a
// digit ('0' subtracted), wrapping on overflow; non-digits are not rejected.
long StringToNum(ConstStr255Param text);
void NumToString(long value, Str255 text);
