// The preferences dialog and the About box, as real widgets on the offscreen
// platform.
#include "core/settings.h"
#include "dialogs/aboutbox.h"
#include "dialogs/dialogitems.h"
#include "dialogs/preferencesdialog.h"
#include "platform/doubles/fakefrontwindow.h"
#include "platform/doubles/fakelauncher.h"
#include "platform/doubles/fakeloginitems.h"
#include "tests/support/installed.h"
#include "titles/userinteraction.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <memory>

namespace {

class PreferencesDialogTest : public ::testing::Test {
protected:
    PreferencesDialogTest() : dialog(NewPreferencesDialog()) { dialog->show(); }
    ~PreferencesDialogTest() override {
        appleMenuSettings = kDefaultAppleMenuSettings;
        generalSettings = kDefaultGeneralSettings;
    }

    QAbstractButton *button(DialogItemIndex item) const {
        return qobject_cast<QAbstractButton *>(dialog->item(item));
    }
    QLineEdit *limitField() const { return qobject_cast<QLineEdit *>(dialog->item(30)); }
    void click(DialogItemIndex item) const {
        ASSERT_TRUE(button(item)->isEnabled()) << item;
        // On the indicator: a stretched button's middle may lie past its text.
        QTest::mouseClick(button(item), Qt::LeftButton, {}, QPoint(6, button(item)->height() / 2));
    }
    // The items among first .. first + count - 1 that are checked, or enabled.
    QList<int> items(DialogItemIndex first, int count, bool enabled = false) const {
        QList<int> on;
        for (DialogItemIndex i = first; i < first + count; ++i)
            if (enabled ? dialog->item(i)->isEnabled() : GetItemValue(dialog.get(), i) != 0)
                on.append(i);
        return on;
    }

    Installed<platform::FakeLoginItems, platform::LoginItems> loginItems;
    std::unique_ptr<ItemDialog> dialog;
};

TEST_F(PreferencesDialogTest, EveryClickChangesItsSettingAndTheDialogShowsItAtOnce) {
    EXPECT_EQ(items(1, 2), (QList<int>{1, 2}));
    EXPECT_EQ(items(9, 5), QList<int>{9}) << "rainbow";
    EXPECT_EQ(items(22, 2), QList<int>{22}) << "hide mode 1";
    EXPECT_EQ(items(24, 3), QList<int>{25}) << "Super";
    EXPECT_EQ(items(16, 6), QList<int>{18}) << "left half";
    EXPECT_EQ(items(28, 2), (QList<int>{28, 29}));
    EXPECT_EQ(limitField()->text(), QStringLiteral("50"));
    // The hide mode enables either the keys or the areas.
    EXPECT_EQ(items(24, 3, true).size(), 3);
    EXPECT_TRUE(items(16, 6, true).isEmpty());
    click(15);
    click(20);
    EXPECT_EQ(appleMenuSettings.hideMode, 2);
    EXPECT_EQ(appleMenuSettings.hideArea, kAreaCentre);
    EXPECT_TRUE(items(24, 3, true).isEmpty());
    EXPECT_EQ(items(16, 6, true).size(), 6);
    click(23);
    click(26);
    click(23);
    EXPECT_EQ(appleMenuSettings.hideModifiers, shiftKey);
    EXPECT_EQ(items(22, 2), QList<int>{23}) << "a checked radio stays checked";
    // Colour samples check their radio; check boxes toggle once.
    for (DialogItemIndex sample = 4; sample <= 8; ++sample) {
        click(sample);
        EXPECT_EQ(items(9, 5), QList<int>{sample + 5}) << "sample " << sample;
    }
    click(11);
    EXPECT_EQ(appleMenuSettings.iconColour, kColourBlue);
    for (DialogItemIndex box : {2, 28, 29})
        click(box);
    EXPECT_EQ(generalSettings.finderToFront + generalSettings.mainMenuIcons +
                  generalSettings.subMenuIcons,
              0);
    EXPECT_TRUE(items(28, 2).isEmpty());
    // The icon limit is kept keystroke by keystroke, as its low 16 bits, unrefreshed.
    appleMenuSettings.iconColour = kColourRed;
    limitField()->selectAll();
    QTest::keyClicks(limitField(), QStringLiteral("70000"));
    EXPECT_EQ(generalSettings.subMenuIconLimit, 4464);
    EXPECT_EQ(items(9, 5), QList<int>{11}) << "blue still: no refresh while typing";
}

TEST_F(PreferencesDialogTest, TheClosingKeysTheCloseButtonAndTheWindowCloseIt) {
    const std::pair<Qt::Key, Qt::KeyboardModifiers> keys[] = {{Qt::Key_Return, {}},
                                                              {Qt::Key_Enter, Qt::KeypadModifier},
                                                              {Qt::Key_Escape, {}},
                                                              {Qt::Key_W, Qt::ControlModifier}};
    for (const auto &[key, modifiers] : keys) {
        dialog->show();
        QTest::keyClick(limitField(), key, modifiers);
        EXPECT_FALSE(dialog->isVisible()) << key;
    }
    dialog->show();
    QTest::keyClick(limitField(), Qt::Key_W);
    EXPECT_TRUE(dialog->isVisible()) << "a plain w is a keystroke";
    dialog->show();
    dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Close)->click();
    EXPECT_FALSE(dialog->isVisible());
}

TEST_F(PreferencesDialogTest, EveryMnemonicIsUsedOnce) {
    QStringList texts;
    for (const QAbstractButton *control : dialog->findChildren<QAbstractButton *>())
        texts.append(control->text());
    for (const QLabel *label : dialog->findChildren<QLabel *>())
        texts.append(label->text());
    QMap<QChar, QString> taken;
    for (const QString &text : std::as_const(texts)) {
        // The letter after a single "&"; "&&" is an ampersand.
        const QString key = QString(text).replace(QLatin1String("&&"), QString()).section(u'&', 1);
        if (key.isEmpty())
            continue;
        EXPECT_FALSE(taken.contains(key[0].toLower()))
            << text.toStdString() << " and " << taken.value(key[0].toLower()).toStdString();
        taken.insert(key[0].toLower(), text);
    }
    EXPECT_GE(taken.size(), 12) << "the check boxes, the main choices and the colours";
}

// Each button closes the box; the two links open their address and leave the
// browser in front, OK brings back the window that was there.
TEST(AboutBox, EachButtonClosesItAndTheLinksLeaveTheBrowserInFront) {
    Installed<platform::FakeLauncher, platform::Launcher> launcher;
    Installed<platform::FakeFrontWindow, platform::FrontWindow> front;
    const ProcessSerialNumber editor{777, 0x400001};
    for (const auto &[button, opened] :
         {std::pair{"aboutOk", ""}, {"aboutWebPage", "https://"}, {"aboutGuide", "file:///"}}) {
        front.front = editor;
        launcher.launches.clear();
        QTimer::singleShot(0, [name = QLatin1String(button)] {
            QApplication::activeModalWidget()->findChild<QPushButton *>(name)->click();
        });
        ShowAboutDialog();
        EXPECT_EQ(launcher.launches.value(0).target.left(qstrlen(opened)), opened) << button;
        EXPECT_EQ(front.front == editor, launcher.launches.isEmpty()) << button;
        EXPECT_EQ(userInteractionHideLevel, 0);
    }
    EXPECT_TRUE(UserGuideURL().endsWith("/share/doc/kestrel-menu/guide.html"));
}

} // namespace
