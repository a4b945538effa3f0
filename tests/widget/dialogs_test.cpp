// The preferences dialog, its item routines and the About box, as real widgets
// on the offscreen platform.
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
#include <QCheckBox>
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

TEST_F(PreferencesDialogTest, ShowsTheSettingsAndEnablesTheChoicesOfTheHideModeOnly) {
    EXPECT_EQ(items(1, 2), (QList<int>{1, 2}));
    EXPECT_EQ(items(9, 5), QList<int>{9}) << "rainbow";
    EXPECT_EQ(items(22, 2), QList<int>{22}) << "hide mode 1";
    EXPECT_EQ(items(24, 3), QList<int>{25}) << "Super";
    EXPECT_EQ(items(16, 6), QList<int>{18}) << "left half";
    EXPECT_EQ(items(28, 2), (QList<int>{28, 29}));
    EXPECT_EQ(limitField()->text(), QStringLiteral("50"));
    EXPECT_EQ(items(24, 3, true).size(), 3);
    EXPECT_TRUE(items(16, 6, true).isEmpty());

    click(15);
    EXPECT_EQ(appleMenuSettings.hideMode, 2);
    EXPECT_TRUE(items(24, 3, true).isEmpty());
    EXPECT_EQ(items(16, 6, true).size(), 6);
    click(20);
    EXPECT_EQ(appleMenuSettings.hideArea, kAreaCentre);
    click(23);
    click(26);
    EXPECT_EQ(appleMenuSettings.hideMode, 3);
    EXPECT_EQ(appleMenuSettings.hideModifiers, shiftKey);
    EXPECT_EQ(items(22, 2), QList<int>{23});
    click(23);
    EXPECT_EQ(items(22, 2), QList<int>{23}) << "a checked radio stays checked";

    // A value with no button of its own shows none checked, and stays.
    appleMenuSettings.iconColour = FourCC("plum");
    RefreshPreferencesDialog(dialog.get());
    EXPECT_TRUE(items(9, 5).isEmpty());
    EXPECT_EQ(appleMenuSettings.iconColour, FourCC("plum"));
}

TEST_F(PreferencesDialogTest, ColoursAndCheckBoxesChangeTheirSettingOnce) {
    for (DialogItemIndex sample = 4; sample <= 8; ++sample) {
        click(sample);
        EXPECT_EQ(items(9, 5), QList<int>{sample + 5}) << "sample " << sample;
    }
    click(11);
    EXPECT_EQ(appleMenuSettings.iconColour, kColourBlue);
    click(2);
    click(28);
    click(29);
    EXPECT_EQ(generalSettings.finderToFront, 0);
    EXPECT_EQ(generalSettings.mainMenuIcons, 0);
    EXPECT_EQ(generalSettings.subMenuIcons, 0);
    EXPECT_TRUE(items(28, 2).isEmpty());
}

TEST_F(PreferencesDialogTest, TheIconLimitIsStoredKeystrokeByKeystrokeAsItsLow16Bits) {
    QLineEdit *field = limitField();
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Backspace);
    EXPECT_EQ(generalSettings.subMenuIconLimit, 0) << "an empty field reads as 0";
    appleMenuSettings.iconColour = kColourRed;
    QTest::keyClicks(field, QStringLiteral("70000"));
    EXPECT_EQ(generalSettings.subMenuIconLimit, 4464);
    EXPECT_EQ(items(9, 5), QList<int>{9}) << "no refresh while typing";
    field->clear();
    QTest::keyClicks(field, QStringLiteral("-5"));
    EXPECT_EQ(generalSettings.subMenuIconLimit, -5);
    QTest::keyClicks(field, QStringLiteral("w"));
    EXPECT_TRUE(dialog->isVisible()) << "a plain w is only a keystroke";
}

TEST_F(PreferencesDialogTest, TheClosingKeysTheCloseButtonAndTheWindowCloseIt) {
    const std::pair<Qt::Key, Qt::KeyboardModifiers> keys[] = {{Qt::Key_Return, Qt::NoModifier},
                                                              {Qt::Key_Enter, Qt::KeypadModifier},
                                                              {Qt::Key_Escape, Qt::NoModifier},
                                                              {Qt::Key_W, Qt::ControlModifier}};
    for (const auto &[key, modifiers] : keys) {
        dialog->show();
        QTest::keyClick(limitField(), key, modifiers);
        EXPECT_FALSE(dialog->isVisible()) << key;
    }
    dialog->show();
    dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Close)->click();
    EXPECT_FALSE(dialog->isVisible());
    dialog->show();
    dialog->close();
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Kestrel Menu Preferences"));
}

TEST_F(PreferencesDialogTest, EveryMnemonicIsUsedOnce) {
    QStringList texts;
    for (const QAbstractButton *control : dialog->findChildren<QAbstractButton *>())
        texts.append(control->text());
    for (const QLabel *label : dialog->findChildren<QLabel *>())
        texts.append(label->text());
    QMap<QChar, QString> taken;
    for (const QString &text : std::as_const(texts)) {
        for (qsizetype i = text.indexOf(u'&'); i >= 0 && i + 1 < text.size();
             i = text.indexOf(u'&', i + 2)) {
            if (text[i + 1] == u'&')
                continue; // a literal ampersand
            const QChar key = text[i + 1].toLower();
            EXPECT_FALSE(taken.contains(key))
                << "Alt+" << QString(key).toStdString() << " in \""
                << taken.value(key).toStdString() << "\" and \"" << text.toStdString() << "\"";
            taken.insert(key, text);
        }
    }
    EXPECT_GE(taken.size(), 12) << "the check boxes, the main choices and the colours";
}

TEST(DialogItems, ValuesTextsAndNumbers) {
    ItemDialog dialog;
    auto *box = new QCheckBox(&dialog);
    auto *field = new QLineEdit(&dialog);
    dialog.registerItem(1, box);
    dialog.registerItem(2, field);
    SetItemValue(&dialog, 1, 2);
    EXPECT_EQ(GetItemValue(&dialog, 1), 2);
    EXPECT_FALSE(ToggleItem(&dialog, 1)) << "mixed becomes off";
    EXPECT_TRUE(ToggleItem(&dialog, 1));
    SetItemEnabled(&dialog, 1, false);
    EXPECT_FALSE(box->isEnabled());
    SetItemNumber(&dialog, 2, -5);
    EXPECT_EQ(field->text(), QStringLiteral("-5"));
    EXPECT_EQ(GetItemNumber(&dialog, 2), -5);
    field->setText(QStringLiteral("4294967297"));
    EXPECT_EQ(GetItemNumber(&dialog, 2), 1) << "wraps at 32 bits";
    field->setText(QStringLiteral("1a"));
    EXPECT_EQ(GetItemNumber(&dialog, 2), 10 + ('a' - '0')) << "non-digits are not rejected";
}

class AboutBoxTest : public ::testing::TestWithParam<const char *> {
protected:
    Installed<platform::FakeLauncher, platform::Launcher> launcher;
    Installed<platform::FakeFrontWindow, platform::FrontWindow> front;
};

// Each button: what it opens, and whether the window that was in front comes back.
TEST_P(AboutBoxTest, EachButtonOpensItsAddressAndLeavesTheBrowserInFront) {
    const ProcessSerialNumber editor{777, 0x400001};
    front.front = editor;
    const QString button = QString::fromLatin1(GetParam());
    QTimer::singleShot(0, [button] {
        QApplication::activeModalWidget()->findChild<QPushButton *>(button)->click();
    });
    ShowAboutDialog();
    EXPECT_EQ(userInteractionHideLevel, 0);
    if (button == QLatin1String("aboutOk")) {
        EXPECT_TRUE(launcher.launches.isEmpty());
        EXPECT_EQ(front.front, editor);
        return;
    }
    ASSERT_EQ(launcher.launches.size(), 1);
    const QByteArray target = launcher.launches[0].target;
    if (button == QLatin1String("aboutWebPage"))
        EXPECT_TRUE(target.startsWith("https://")) << target.constData();
    else // the guide installed beside the program
        EXPECT_TRUE(target.startsWith("file:///") &&
                    target.endsWith("/share/doc/kestrel-menu/guide.html"))
            << target.constData();
    EXPECT_EQ(front.front, front.self) << "the previous window is not brought back";
}
INSTANTIATE_TEST_SUITE_P(Buttons, AboutBoxTest,
                         ::testing::Values("aboutOk", "aboutWebPage", "aboutGuide"));

} // namespace
