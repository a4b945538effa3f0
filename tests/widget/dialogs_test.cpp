// The preferences dialog, its item routines and the About box, as real widgets
// on the offscreen platform.
#include "core/settings.h"
#include "dialogs/aboutbox.h"
#include "dialogs/dialogitems.h"
#include "dialogs/preferencesdialog.h"
#include "platform/doubles/fakefrontwindow.h"
#include "platform/doubles/fakelauncher.h"
#include "platform/doubles/fakeloginitems.h"
#include "platform/service.h"
#include "platform/xdgautostart.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"
#include "titles/userinteraction.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <memory>
#include <sys/stat.h>

namespace {

class PreferencesDialogTest : public ::testing::Test {
protected:
    PreferencesDialogTest() : dialog(NewPreferencesDialog()) {
        loginItems.self = QByteArray("/opt/kestrel/kestrel-menu");
        dialog->show();
    }
    ~PreferencesDialogTest() override {
        appleMenuSettings = kDefaultAppleMenuSettings;
        generalSettings = kDefaultGeneralSettings;
    }

    QAbstractButton *button(DialogItemIndex item) const {
        return qobject_cast<QAbstractButton *>(dialog->item(item));
    }
    QLineEdit *limitField() const { return qobject_cast<QLineEdit *>(dialog->item(30)); }
    void click(DialogItemIndex item) const {
        ASSERT_NE(button(item), nullptr) << item;
        ASSERT_TRUE(button(item)->isEnabled()) << item;
        // On the indicator: a stretched button's middle may lie past its text.
        QTest::mouseClick(button(item), Qt::LeftButton, {}, QPoint(6, button(item)->height() / 2));
    }
    // The items checked right now, among `first` .. `first + count - 1`.
    QList<int> checked(DialogItemIndex first, int count) const {
        QList<int> on;
        for (int i = 0; i < count; ++i)
            if (GetItemValue(dialog.get(), DialogItemIndex(first + i)) != 0)
                on.append(first + i);
        return on;
    }

    Installed<platform::FakeLoginItems, platform::LoginItems> loginItems;
    std::unique_ptr<ItemDialog> dialog;
};

TEST_F(PreferencesDialogTest, ShowsTheSettingsAsTheyAre) {
    EXPECT_EQ(checked(1, 2), (QList<int>{1, 2}));
    EXPECT_EQ(checked(9, 5), QList<int>{9}) << "rainbow";
    EXPECT_EQ(checked(22, 2), QList<int>{22}) << "hide mode 1";
    EXPECT_EQ(checked(15, 1), QList<int>{});
    EXPECT_EQ(checked(24, 3), QList<int>{25}) << "Super";
    EXPECT_EQ(checked(16, 6), QList<int>{18}) << "left half";
    EXPECT_EQ(checked(28, 2), (QList<int>{28, 29}));
    EXPECT_EQ(limitField()->text(), QStringLiteral("50"));

    // A value with no button of its own shows no button checked, and stays.
    appleMenuSettings.iconColour = FourCC("plum");
    appleMenuSettings.hideMode = 7;
    RefreshPreferencesDialog(dialog.get());
    EXPECT_TRUE(checked(9, 5).isEmpty());
    EXPECT_TRUE(checked(22, 2).isEmpty());
    EXPECT_TRUE(checked(15, 1).isEmpty());
    EXPECT_EQ(appleMenuSettings.iconColour, FourCC("plum"));
}

TEST_F(PreferencesDialogTest, TheHideModeEnablesEitherTheAreasOrTheKeys) {
    auto enabled = [&](DialogItemIndex first, int count) {
        int n = 0;
        for (int i = 0; i < count; ++i)
            n += dialog->item(DialogItemIndex(first + i))->isEnabled();
        return n;
    };
    EXPECT_EQ(enabled(24, 3), 3);
    EXPECT_EQ(enabled(16, 6), 0);

    click(15);
    EXPECT_EQ(appleMenuSettings.hideMode, 2);
    EXPECT_EQ(enabled(24, 3), 0);
    EXPECT_EQ(enabled(16, 6), 6);
    EXPECT_EQ(checked(15, 1), QList<int>{15});
    EXPECT_TRUE(checked(22, 2).isEmpty());

    click(20);
    EXPECT_EQ(appleMenuSettings.hideArea, kAreaCentre);
    EXPECT_EQ(checked(16, 6), QList<int>{20});

    click(23);
    EXPECT_EQ(appleMenuSettings.hideMode, 3);
    EXPECT_EQ(enabled(24, 3), 3);
    EXPECT_EQ(enabled(16, 6), 0);
    click(24);
    EXPECT_EQ(appleMenuSettings.hideModifiers, cmdKey);
    click(26);
    EXPECT_EQ(appleMenuSettings.hideModifiers, shiftKey);
    EXPECT_EQ(checked(24, 3), QList<int>{26});

    click(22);
    EXPECT_EQ(appleMenuSettings.hideMode, 1);
    EXPECT_EQ(checked(22, 2), QList<int>{22}) << "clicking a checked radio keeps it checked";
    click(22);
    EXPECT_EQ(checked(22, 2), QList<int>{22});
}

TEST_F(PreferencesDialogTest, ColourSamplesAndRadiosPickTheColour) {
    const std::pair<DialogItemIndex, OSType> samples[] = {{4, kColourRainbow},
                                                          {5, kColourGrey},
                                                          {6, kColourBlue},
                                                          {7, kColourRed},
                                                          {8, kColourGreen}};
    for (const auto &[sample, colour] : samples) {
        click(sample);
        EXPECT_EQ(appleMenuSettings.iconColour, colour);
        EXPECT_EQ(checked(9, 5), QList<int>{sample + 5}) << "sample " << sample;
    }
    click(11);
    EXPECT_EQ(appleMenuSettings.iconColour, kColourBlue);
    EXPECT_EQ(checked(9, 5), QList<int>{11});
}

TEST_F(PreferencesDialogTest, CheckBoxesToggleTheirSettingOnce) {
    click(2);
    EXPECT_EQ(generalSettings.finderToFront, 0);
    EXPECT_EQ(GetItemValue(dialog.get(), 2), 0);
    click(2);
    EXPECT_EQ(generalSettings.finderToFront, 1);
    click(28);
    EXPECT_EQ(generalSettings.mainMenuIcons, 0);
    click(29);
    EXPECT_EQ(generalSettings.subMenuIcons, 0);
    EXPECT_EQ(checked(28, 2), QList<int>{});
}

TEST_F(PreferencesDialogTest, TheIconLimitIsStoredKeystrokeByKeystroke) {
    QLineEdit *field = limitField();
    field->setFocus();
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Backspace);
    EXPECT_EQ(generalSettings.subMenuIconLimit, 0) << "an empty field reads as 0";

    // While typing, the rest of the dialog is not refreshed.
    appleMenuSettings.iconColour = kColourRed;
    QTest::keyClicks(field, QStringLiteral("7"));
    EXPECT_EQ(generalSettings.subMenuIconLimit, 7);
    QTest::keyClicks(field, QStringLiteral("0000"));
    EXPECT_EQ(generalSettings.subMenuIconLimit, 4464) << "70000 keeps its low 16 bits";
    EXPECT_EQ(checked(9, 5), QList<int>{9}) << "no refresh while typing";

    field->clear();
    QTest::keyClicks(field, QStringLiteral("-5"));
    EXPECT_EQ(generalSettings.subMenuIconLimit, -5);
    QTest::keyClicks(field, QStringLiteral("w"));
    EXPECT_TRUE(dialog->isVisible()) << "a plain w is only a keystroke";
    EXPECT_EQ(field->text(), QStringLiteral("-5w"));
}

TEST_F(PreferencesDialogTest, EveryClosingKeyClosesTheDialog) {
    struct Key {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
    };
    for (const Key &key :
         {Key{Qt::Key_Return, Qt::NoModifier}, Key{Qt::Key_Enter, Qt::KeypadModifier},
          Key{Qt::Key_Escape, Qt::NoModifier}, Key{Qt::Key_W, Qt::ControlModifier}}) {
        dialog->show();
        limitField()->setFocus();
        QTest::keyClick(limitField(), key.key, key.modifiers);
        EXPECT_FALSE(dialog->isVisible()) << key.key;
    }
    dialog->show();
    dialog->close();
    EXPECT_FALSE(dialog->isVisible());
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
    EXPECT_EQ(GetItemValue(&dialog, 1), 0);
    EXPECT_TRUE(ToggleItem(&dialog, 1));
    SetItemEnabled(&dialog, 1, false);
    EXPECT_FALSE(box->isEnabled());
    SetItemEnabled(&dialog, 1, true);
    EXPECT_TRUE(box->isEnabled());

    SetItemNumber(&dialog, 2, -5);
    EXPECT_EQ(field->text(), QStringLiteral("-5"));
    EXPECT_EQ(GetItemNumber(&dialog, 2), -5);
    field->clear();
    EXPECT_EQ(GetItemNumber(&dialog, 2), 0);
    field->setText(QStringLiteral("4294967297"));
    EXPECT_EQ(GetItemNumber(&dialog, 2), 1) << "wraps at 32 bits";
    field->setText(QStringLiteral("1a"));
    EXPECT_EQ(GetItemNumber(&dialog, 2), 10 + ('a' - '0')) << "non-digits are not rejected";
    EXPECT_EQ(GetItemHandle(&dialog, 3), nullptr);
}

// Runs `action` on the modal box that the next exec() shows.
void WhenModalShows(std::function<void(QWidget *)> action) {
    QTimer::singleShot(0, [action] {
        QWidget *modal = QApplication::activeModalWidget();
        ASSERT_NE(modal, nullptr);
        action(modal);
    });
}

class AboutBoxTest : public ::testing::Test {
protected:
    platform::FakeLauncher launcher;
    Installed<platform::FakeFrontWindow, platform::FrontWindow> front;
    platform::ScopedService<platform::Launcher> installedLauncher{&launcher};
    const ProcessSerialNumber editor{777, 0x400001};
};

TEST_F(AboutBoxTest, OkBringsThePreviousWindowBack) {
    front.front = editor;
    WhenModalShows(
        [](QWidget *box) { box->findChild<QPushButton *>(QStringLiteral("aboutOk"))->click(); });
    ShowAboutDialog();
    EXPECT_TRUE(launcher.launches.isEmpty());
    EXPECT_EQ(front.front, editor);
    EXPECT_EQ(userInteractionHideLevel, 0);
}

TEST_F(AboutBoxTest, TheGuideButtonOpensTheGuideAndLeavesTheBrowserInFront) {
    front.front = editor;
    WhenModalShows(
        [](QWidget *box) { box->findChild<QPushButton *>(QStringLiteral("aboutGuide"))->click(); });
    ShowAboutDialog();
    ASSERT_EQ(launcher.launches.size(), 1);
    EXPECT_EQ(launcher.launches[0].what, "Url");
    EXPECT_TRUE(launcher.launches[0].target.startsWith("file:///"));
    EXPECT_TRUE(launcher.launches[0].target.endsWith("/share/doc/kestrel-menu/guide.html"));
    EXPECT_EQ(front.front, front.self) << "the previous window is not brought back";
    EXPECT_EQ(userInteractionHideLevel, 0);

    launcher.failure = -10814;
    EXPECT_EQ(OpenURL("file:///nowhere", 15), noErr) << "a failed launch is not the caller's";
}

TEST(OpenAtLoginItem, TogglingAddsAndRemovesTheAutostartEntryAtOnce) {
    TempEnvironment env;
    const QByteArray self = env.root() + "/bin/kestrel-menu";
    WriteFile(self, "#!/bin/sh\n");
    ::chmod(self.constData(), 0755);
    platform::XdgAutostart autostart(self);
    platform::ScopedService<platform::LoginItems> installed(&autostart);
    const QString entry = QFile::decodeName(env.configHome() + "/autostart/kestrel-menu.desktop");

    generalSettings.openAtStartup = 0;
    std::unique_ptr<ItemDialog> dialog(NewPreferencesDialog());
    dialog->show();
    auto *item = qobject_cast<QAbstractButton *>(dialog->item(1));
    const QPoint indicator(6, item->height() / 2);
    QTest::mouseClick(item, Qt::LeftButton, {}, indicator);
    EXPECT_EQ(generalSettings.openAtStartup, 1);
    EXPECT_TRUE(QFile::exists(entry));
    QTest::mouseClick(item, Qt::LeftButton, {}, indicator);
    EXPECT_EQ(generalSettings.openAtStartup, 0);
    EXPECT_FALSE(QFile::exists(entry));
    generalSettings = kDefaultGeneralSettings;
}

} // namespace
