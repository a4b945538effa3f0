#include "dialogs/preferencesdialog.h"

#include "core/settings.h"
#include "foldermenus/foldercache.h"
#include "prefs/openatlogin.h"
#include "titles/titleevents.h"
#include "titles/userinteraction.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QIntValidator>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QRadioButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr OSType kColours[] = {kColourRainbow, kColourGrey, kColourBlue, kColourRed, kColourGreen};
constexpr const char *kColourImages[] = {":/images/rainbow.png", ":/images/grey.png",
                                         ":/images/blue.png", ":/images/red.png",
                                         ":/images/green.png"};
constexpr OSType kAreas[] = {kAreaTop,   kAreaBottom, kAreaLeft,
                             kAreaRight, kAreaCentre, kAreaOutside};
constexpr std::uint16_t kModifiers[] = {cmdKey, controlKey, shiftKey};

// Buttons whose state only the dialog's refresh sets: a click reports the item
// and changes nothing by itself.
class ItemCheckBox final : public QCheckBox {
public:
    using QCheckBox::QCheckBox;

protected:
    void nextCheckState() override {}
};

class ItemRadioButton final : public QRadioButton {
public:
    explicit ItemRadioButton(const QString &text) : QRadioButton(text) { setAutoExclusive(false); }

protected:
    void nextCheckState() override {}
};

// A user item: its drawing procedure paints it.
class UserItem final : public QWidget {
public:
    UserItem(DialogRef dialog, DialogItemIndex item) : dialog_(dialog), item_(item) {
        setFixedHeight(12);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }

protected:
    void paintEvent(QPaintEvent *) override {
        if (const UserItemProc proc = dialog_->userItemProc(item_))
            proc(dialog_, item_);
    }

private:
    DialogRef dialog_;
    DialogItemIndex item_;
};

class PreferencesDialog final : public ItemDialog {
public:
    PreferencesDialog() {
        setWindowTitle(tr("Kestrel Menu Preferences"));
        setObjectName(QStringLiteral("preferencesDialog"));
        auto *layout = new QVBoxLayout(this);

        // Every mnemonic is used once, so that Alt and a letter acts at once
        // instead of moving the focus between controls that share it.
        layout->addWidget(label(kStartupLabelItem, tr("Starting")));
        layout->addWidget(checkBox(kOpenAtLoginItem, tr("&Open Kestrel Menu when I log in")));
        layout->addWidget(checkBox(kFinderToFrontItem,
                                   tr("Bring the &file manager to the front when it starts")));
        layout->addWidget(separator(kFirstSeparatorItem));

        layout->addWidget(label(kColourLabelItem, tr("Colour of the title")));
        auto *colours = new QGridLayout;
        const QString names[] = {tr("&Rainbow"), tr("Gr&ey"), tr("&Blue"), tr("Re&d"),
                                 tr("&Green")};
        for (int i = 0; i < 5; ++i) {
            auto *sample = new QToolButton;
            sample->setIcon(QIcon(QString::fromLatin1(kColourImages[i])));
            sample->setIconSize(QSize(35, 22));
            sample->setAutoRaise(true);
            // The radio button below says the same and takes the keyboard.
            sample->setFocusPolicy(Qt::NoFocus);
            sample->setToolTip(QString(names[i]).remove(u'&'));
            sample->setAccessibleName(QString(names[i]).remove(u'&'));
            const DialogItemIndex sampleItem = DialogItemIndex(kFirstColourSampleItem + i);
            registerItem(sampleItem, sample);
            connect(sample, &QToolButton::clicked, this, [this, sampleItem] { hit(sampleItem); });
            colours->addWidget(sample, 0, i, Qt::AlignHCenter);
            colours->addWidget(radio(DialogItemIndex(kFirstColourRadioItem + i), names[i]), 1, i,
                               Qt::AlignHCenter);
        }
        layout->addLayout(colours);
        layout->addWidget(separator(kFirstSeparatorItem + 1));

        layout->addWidget(
            label(kHidingLabelItem, tr("Hiding the title, to reach what is under it")));
        layout->addWidget(radio(kHideWithKeyItem, tr("&Hide it while the pointer is over it and "
                                                     "a key is held")));
        layout->addWidget(radio(kShowWithKeyItem, tr("Sho&w it only while the pointer is over it "
                                                     "and a key is held")));
        auto *keys = new QHBoxLayout;
        keys->addSpacing(24);
        keys->addWidget(new QLabel(tr("The key:")));
        const QString keyNames[] = {tr("Ctrl"), tr("Super"), tr("Shift")};
        for (int i = 0; i < 3; ++i)
            keys->addWidget(radio(DialogItemIndex(kFirstModifierItem + i), keyNames[i]));
        keys->addStretch();
        layout->addLayout(keys);
        layout->addWidget(
            radio(kHideOverAreaItem, tr("Hide it while the pointer is over &part of it:")));
        auto *areas = new QGridLayout;
        areas->setColumnMinimumWidth(0, 24);
        const QString areaNames[] = {tr("Top half"),   tr("Bottom half"), tr("Left half"),
                                     tr("Right half"), tr("Centre"),      tr("Around the centre")};
        for (int i = 0; i < 6; ++i)
            areas->addWidget(radio(DialogItemIndex(kFirstAreaItem + i), areaNames[i]), i / 3,
                             1 + i % 3);
        layout->addLayout(areas);
        layout->addWidget(separator(kFirstSeparatorItem + 2));

        layout->addWidget(label(kIconsLabelItem, tr("Icons")));
        layout->addWidget(checkBox(kMainMenuIconsItem, tr("Show icons in the &main menu")));
        auto *subIcons = new QHBoxLayout;
        subIcons->addWidget(checkBox(kSubMenuIconsItem, tr("Show icons in &submenus of at most")));
        auto *limit = new QLineEdit;
        limit->setObjectName(QStringLiteral("iconLimit"));
        limit->setMaximumWidth(limit->fontMetrics().horizontalAdvance(QStringLiteral("0000000")));
        limit->setAccessibleName(tr("Largest folder whose submenu shows icons"));
        registerItem(kIconLimitItem, limit);
        connect(limit, &QLineEdit::textEdited, this, [this] { hit(kIconLimitItem); });
        subIcons->addWidget(limit);
        subIcons->addWidget(new QLabel(tr("items")));
        subIcons->addStretch();
        layout->addLayout(subIcons);

        // Every change is kept as it is made: closing is the only thing left to do.
        auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
        connect(buttons, &QDialogButtonBox::rejected, this, [this] { hit(kClosePreferencesItem); });
        layout->addWidget(buttons);
        layout->setSizeConstraint(QLayout::SetFixedSize);
    }

    void hit(DialogItemIndex item) {
        if (!HitPreferencesItem(this, item))
            done(0);
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override {
        auto *widget = qobject_cast<QWidget *>(watched);
        if (widget != nullptr && (widget == this || isAncestorOf(widget))) {
            DialogItemIndex itemHit = 0;
            if (ShowPreferencesFilter(this, event, &itemHit)) {
                hit(itemHit);
                return true;
            }
        }
        return ItemDialog::eventFilter(watched, event);
    }

    void closeEvent(QCloseEvent *event) override {
        DialogItemIndex itemHit = 0;
        if (ShowPreferencesFilter(this, event, &itemHit))
            hit(itemHit);
        event->accept();
    }

    void showEvent(QShowEvent *event) override {
        qApp->installEventFilter(this);
        ItemDialog::showEvent(event);
    }
    void hideEvent(QHideEvent *event) override {
        qApp->removeEventFilter(this);
        ItemDialog::hideEvent(event);
    }

private:
    QLabel *label(DialogItemIndex item, const QString &text) {
        auto *control = new QLabel(text);
        QFont bold = control->font();
        bold.setBold(true);
        control->setFont(bold);
        registerItem(item, control);
        return control;
    }
    QCheckBox *checkBox(DialogItemIndex item, const QString &text) {
        auto *control = new ItemCheckBox(text);
        registerItem(item, control);
        connect(control, &QCheckBox::clicked, this, [this, item] { hit(item); });
        return control;
    }
    QRadioButton *radio(DialogItemIndex item, const QString &text) {
        auto *control = new ItemRadioButton(text);
        registerItem(item, control);
        connect(control, &QRadioButton::clicked, this, [this, item] { hit(item); });
        return control;
    }
    QWidget *separator(DialogItemIndex item) {
        auto *control = new UserItem(this, item);
        registerItem(item, control);
        return control;
    }
};

void SetColour(OSType colour) {
    appleMenuSettings.iconColour = colour;
    InvalidateReadyMenus();
}

} // namespace

DialogRef NewPreferencesDialog() {
    auto *dialog = new PreferencesDialog;
    for (DialogItemIndex item = kFirstSeparatorItem; item < kFirstSeparatorItem + 3; ++item)
        SetItemHandle(dialog, item, DrawSeparatorUserItem);
    RefreshPreferencesDialog(dialog);
    return dialog;
}

void RefreshPreferencesDialog(DialogRef dialog) {
    SetItemValue(dialog, kOpenAtLoginItem, std::int16_t(generalSettings.openAtStartup));
    SetItemValue(dialog, kFinderToFrontItem, std::int16_t(generalSettings.finderToFront));
    for (int i = 0; i < 5; ++i)
        SetItemValue(dialog, DialogItemIndex(kFirstColourRadioItem + i),
                     appleMenuSettings.iconColour == kColours[i]);
    SetItemValue(dialog, kHideWithKeyItem, appleMenuSettings.hideMode == 1);
    SetItemValue(dialog, kShowWithKeyItem, appleMenuSettings.hideMode == 3);
    SetItemValue(dialog, kHideOverAreaItem, appleMenuSettings.hideMode == 2);
    for (int i = 0; i < 3; ++i)
        SetItemValue(dialog, DialogItemIndex(kFirstModifierItem + i),
                     appleMenuSettings.hideModifiers == kModifiers[i]);
    for (int i = 0; i < 6; ++i)
        SetItemValue(dialog, DialogItemIndex(kFirstAreaItem + i),
                     appleMenuSettings.hideArea == kAreas[i]);
    SetItemValue(dialog, kMainMenuIconsItem, std::int16_t(generalSettings.mainMenuIcons));
    SetItemValue(dialog, kSubMenuIconsItem, std::int16_t(generalSettings.subMenuIcons));
    SetItemNumber(dialog, kIconLimitItem, generalSettings.subMenuIconLimit);

    const bool withKey = appleMenuSettings.hideMode == 1 || appleMenuSettings.hideMode == 3;
    for (int i = 0; i < 3; ++i)
        SetItemEnabled(dialog, DialogItemIndex(kFirstModifierItem + i), withKey);
    for (int i = 0; i < 6; ++i)
        SetItemEnabled(dialog, DialogItemIndex(kFirstAreaItem + i),
                       appleMenuSettings.hideMode == 2);
}

bool HitPreferencesItem(DialogRef dialog, DialogItemIndex item) {
    if (item == kClosePreferencesItem)
        return false;
    bool refresh = true;
    if (item == kOpenAtLoginItem) {
        generalSettings.openAtStartup = ToggleItem(dialog, item);
        ApplyOpenAtStartupSetting();
    } else if (item == kFinderToFrontItem) {
        generalSettings.finderToFront = ToggleItem(dialog, item);
    } else if (item >= kFirstColourSampleItem && item < kFirstColourSampleItem + 5) {
        SetColour(kColours[item - kFirstColourSampleItem]);
    } else if (item >= kFirstColourRadioItem && item < kFirstColourRadioItem + 5) {
        SetColour(kColours[item - kFirstColourRadioItem]);
    } else if (item == kHideOverAreaItem) {
        appleMenuSettings.hideMode = 2;
    } else if (item >= kFirstAreaItem && item < kFirstAreaItem + 6) {
        appleMenuSettings.hideArea = kAreas[item - kFirstAreaItem];
    } else if (item == kHideWithKeyItem) {
        appleMenuSettings.hideMode = 1;
    } else if (item == kShowWithKeyItem) {
        appleMenuSettings.hideMode = 3;
    } else if (item >= kFirstModifierItem && item < kFirstModifierItem + 3) {
        appleMenuSettings.hideModifiers = kModifiers[item - kFirstModifierItem];
    } else if (item == kMainMenuIconsItem) {
        generalSettings.mainMenuIcons = ToggleItem(dialog, item);
        DestroyFolderCachedMenu(nullptr);
    } else if (item == kSubMenuIconsItem) {
        generalSettings.subMenuIcons = ToggleItem(dialog, item);
    } else if (item == kIconLimitItem) {
        // Kept as the low 16 bits, without a range check: 70000 becomes 4464.
        generalSettings.subMenuIconLimit =
            std::int16_t(std::uint16_t(GetItemNumber(dialog, kIconLimitItem)));
        refresh = false;
    } else {
        refresh = false; // labels, separators and numbers past the last item
    }
    if (refresh)
        RefreshPreferencesDialog(dialog);
    return true;
}

bool ShowPreferencesFilter(DialogRef, QEvent *event, DialogItemIndex *itemHit) {
    if (event->type() == QEvent::Close) {
        *itemHit = kClosePreferencesItem;
        return true;
    }
    if (event->type() != QEvent::KeyPress)
        return false;
    const auto *key = static_cast<QKeyEvent *>(event);
    const bool closing = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter ||
                         key->key() == Qt::Key_Escape ||
                         (key->key() == Qt::Key_W && (key->modifiers() & Qt::ControlModifier) != 0);
    if (!closing)
        return false;
    *itemHit = kClosePreferencesItem;
    return true;
}

void DrawSeparatorUserItem(DialogRef dialog, DialogItemIndex item) {
    QWidget *control = GetItemHandle(dialog, item);
    Rect area;
    GetItemRect(dialog, item, &area);
    // A hairline across the item's middle, in the palette's separator colour.
    QPainter painter(control);
    const int middle = (area.bottom - area.top) / 2;
    painter.setPen(control->palette().color(QPalette::Mid));
    painter.drawLine(0, middle, area.right - area.left, middle);
}

void ShowPreferencesDialog() {
    ProcessSerialNumber previousFront;
    BeginUserInteraction(&previousFront);
    DialogRef dialog = NewPreferencesDialog();
    dialog->exec();
    delete dialog;
    EndUserInteraction(&previousFront);
}
