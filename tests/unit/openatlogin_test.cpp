#include "core/desktopentry.h"
#include "core/settings.h"
#include "platform/doubles/fakeloginitems.h"
#include "platform/service.h"
#include "platform/xdgautostart.h"
#include "prefs/openatlogin.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using platform::LoginItem;

// The list routines and the keep-exactly-one rule, on a list in memory.
class OpenAtLoginTest : public ::testing::Test {
protected:
    OpenAtLoginTest() {
        store.self = QByteArray("/opt/kestrel/kestrel-menu");
        store.kestrelPrograms = {"/old/copy/kestrel-menu"};
    }
    ~OpenAtLoginTest() override { generalSettings = kDefaultGeneralSettings; }

    void give(const QString &name, const QByteArray &path) {
        store.currentUser.append(LoginItem{name, path, false});
    }
    QList<QByteArray> paths() const {
        QList<QByteArray> result;
        for (const LoginItem &item : store.currentUser)
            result.append(item.path.value_or("?"));
        return result;
    }

    Installed<platform::FakeLoginItems, platform::LoginItems> store;
};

TEST_F(OpenAtLoginTest, OnWithNoEntryAppendsOneNotHidden) {
    give(QStringLiteral("mail"), "/usr/bin/mail-client");
    generalSettings.openAtStartup = 1;
    ApplyOpenAtStartupSetting();
    ASSERT_EQ(paths(), (QList<QByteArray>{"/usr/bin/mail-client", "/opt/kestrel/kestrel-menu"}));
    EXPECT_EQ(store.currentUser[1].hide, false);
    ApplyOpenAtStartupSetting();
    EXPECT_EQ(store.currentUser.size(), 2) << "applying again changes nothing";
}

TEST_F(OpenAtLoginTest, OnKeepsTheLastOfSeveralOwnEntriesAndDropsOtherCopies) {
    give(QStringLiteral("a"), "/opt/kestrel/kestrel-menu");
    give(QStringLiteral("b"), "/old/copy/kestrel-menu");
    give(QStringLiteral("c"), "/usr/bin/editor");
    give(QStringLiteral("d"), "/opt/kestrel/kestrel-menu");
    generalSettings.openAtStartup = 1;
    ApplyOpenAtStartupSetting();
    EXPECT_EQ(paths(), (QList<QByteArray>{"/usr/bin/editor", "/opt/kestrel/kestrel-menu"}));
    EXPECT_EQ(store.currentUser[1].entryName, QStringLiteral("d"));
}

TEST_F(OpenAtLoginTest, OnWithOnlyAnotherCopyReplacesIt) {
    give(QStringLiteral("b"), "/old/copy/kestrel-menu");
    generalSettings.openAtStartup = 1;
    ApplyOpenAtStartupSetting();
    EXPECT_EQ(paths(), (QList<QByteArray>{"/opt/kestrel/kestrel-menu"}));
}

TEST_F(OpenAtLoginTest, OffRemovesEveryCopyAndNothingElse) {
    give(QStringLiteral("a"), "/opt/kestrel/kestrel-menu");
    give(QStringLiteral("b"), "/old/copy/kestrel-menu");
    give(QStringLiteral("c"), "/no/longer/there");
    store.currentUser.append(LoginItem{QStringLiteral("no-exec"), std::nullopt, std::nullopt});
    generalSettings.openAtStartup = 0;
    ApplyOpenAtStartupSetting();
    EXPECT_EQ(paths(), (QList<QByteArray>{"/no/longer/there", "?"}));
}

TEST_F(OpenAtLoginTest, AnUnknownRunningCopyBehavesAsOff) {
    give(QStringLiteral("a"), "/old/copy/kestrel-menu");
    store.self.reset();
    generalSettings.openAtStartup = 1;
    ApplyOpenAtStartupSetting();
    EXPECT_TRUE(store.currentUser.isEmpty());
}

TEST_F(OpenAtLoginTest, PropertiesByIndex) {
    give(QStringLiteral("a"), "/usr/lib/tool/run/");
    give(QStringLiteral("b"), "///");
    store.currentUser.append(LoginItem{QStringLiteral("c"), "/bin/x", true});
    store.currentUser.append(LoginItem{QStringLiteral("d"), std::nullopt, std::nullopt});

    EXPECT_EQ(GetCountOfLoginItems(kLoginItemsCurrentUser), 4);
    EXPECT_STREQ(ReturnLoginItemPropertyAtIndex(kLoginItemsCurrentUser, kLoginItemPath, 0),
                 "/usr/lib/tool/run/");
    EXPECT_STREQ(ReturnLoginItemPropertyAtIndex(kLoginItemsCurrentUser, kLoginItemName, 0), "run");
    EXPECT_EQ(ReturnLoginItemPropertyAtIndex(kLoginItemsCurrentUser, kLoginItemName, 1), nullptr);
    EXPECT_STREQ(ReturnLoginItemPropertyAtIndex(kLoginItemsCurrentUser, kLoginItemHide, 0),
                 "false");
    EXPECT_STREQ(ReturnLoginItemPropertyAtIndex(kLoginItemsCurrentUser, kLoginItemHide, 2), "true");
    EXPECT_EQ(ReturnLoginItemPropertyAtIndex(kLoginItemsCurrentUser, kLoginItemPath, 3), nullptr);
    EXPECT_EQ(ReturnLoginItemPropertyAtIndex(kLoginItemsCurrentUser, kLoginItemHide, 3), nullptr);
    for (int property : {0, 4})
        EXPECT_EQ(ReturnLoginItemPropertyAtIndex(kLoginItemsCurrentUser, property, 0), nullptr);
    EXPECT_EQ(ReturnLoginItemPropertyAtIndex(kLoginItemsCurrentUser, kLoginItemPath, -1), nullptr);
    EXPECT_EQ(ReturnLoginItemPropertyAtIndex(kLoginItemsCurrentUser, kLoginItemPath, 4), nullptr);

    // A path longer than the shared buffer comes back cut to 1024 bytes.
    store.currentUser.append(LoginItem{QStringLiteral("e"), '/' + QByteArray(2000, 'p'), false});
    EXPECT_EQ(qstrlen(ReturnLoginItemPropertyAtIndex(kLoginItemsCurrentUser, kLoginItemPath, 4)),
              1024u);
}

TEST_F(OpenAtLoginTest, EditsByIndexAndUserChecks) {
    give(QStringLiteral("a"), "/bin/a");
    give(QStringLiteral("b"), "/bin/b");
    EXPECT_FALSE(RemoveLoginItemAtIndex(kLoginItemsCurrentUser, 2)) << "index equal to the count";
    EXPECT_FALSE(RemoveLoginItemAtIndex(kLoginItemsCurrentUser, -1));
    EXPECT_EQ(store.currentUser.size(), 2);
    EXPECT_TRUE(RemoveLoginItemAtIndex(kLoginItemsCurrentUser, 0));
    EXPECT_EQ(paths(), (QList<QByteArray>{"/bin/b"}));

    EXPECT_TRUE(AddLoginItemWithPropertiesToUser(kLoginItemsAnyUser, "/bin/shared", true));
    EXPECT_EQ(store.anyUser.size(), 1);
    EXPECT_EQ(GetCountOfLoginItems(kLoginItemsAnyUser), 1);

    constexpr LoginItemsUser someoneElse = 7;
    EXPECT_EQ(GetCountOfLoginItems(someoneElse), 0);
    EXPECT_EQ(ReturnLoginItemPropertyAtIndex(someoneElse, kLoginItemPath, 0), nullptr);
    EXPECT_FALSE(RemoveLoginItemAtIndex(someoneElse, 0));
    EXPECT_FALSE(AddLoginItemWithPropertiesToUser(someoneElse, "/bin/x", false));
    EXPECT_EQ(store.currentUser.size(), 1);
}

// The same rules on the real autostart folders, with real files.
class AutostartFoldersTest : public ::testing::Test {
protected:
    AutostartFoldersTest() {
        WriteFile(self, "#!/bin/sh\n");
        ::chmod(self.constData(), 0755);
    }
    ~AutostartFoldersTest() override { generalSettings = kDefaultGeneralSettings; }

    QByteArray userFolder() const { return env.configHome() + "/autostart"; }
    QStringList userEntries() const {
        return QDir(QFile::decodeName(userFolder())).entryList(QDir::Files, QDir::Name);
    }

    TempEnvironment env;
    QByteArray self{env.root() + "/install dir/kestrel-menu"};
    platform::XdgAutostart autostart{self};
    platform::ScopedService<platform::LoginItems> installed{&autostart};
};

TEST_F(AutostartFoldersTest, TheEntryWrittenStartsThisCopyAndIsValid) {
    generalSettings.openAtStartup = 1;
    ApplyOpenAtStartupSetting();
    ASSERT_EQ(userEntries(), QStringList{QStringLiteral("kestrel-menu.desktop")});
    const QByteArray file = userFolder() + "/kestrel-menu.desktop";
    const auto entry = DesktopEntry::read(file);
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(entry->execProgram(), self) << "a path with a space is quoted and read back";
    EXPECT_EQ(entry->value(QStringLiteral("Type")), QStringLiteral("Application"));

    const QString validator =
        QStandardPaths::findExecutable(QStringLiteral("desktop-file-validate"));
    if (!validator.isEmpty()) {
        QProcess check;
        check.start(validator, {QFile::decodeName(file)});
        ASSERT_TRUE(check.waitForFinished());
        EXPECT_EQ(check.exitCode(), 0) << check.readAllStandardOutput().constData();
        EXPECT_TRUE(check.readAllStandardOutput().isEmpty());
    }

    ApplyOpenAtStartupSetting();
    EXPECT_EQ(userEntries().size(), 1);
    generalSettings.openAtStartup = 0;
    ApplyOpenAtStartupSetting();
    EXPECT_TRUE(userEntries().isEmpty());
}

TEST_F(AutostartFoldersTest, OtherEntriesAndDisabledOnesAreLeftAlone) {
    WriteFile(userFolder() + "/b-editor.desktop",
              "[Desktop Entry]\nType=Application\nName=Editor\nExec=/usr/bin/editor --fast\n");
    WriteFile(userFolder() + "/a-hidden.desktop",
              "[Desktop Entry]\nType=Application\nName=Old\nExec=\"" + self + "\"\nHidden=true\n");
    WriteFile(userFolder() + "/c-off.desktop",
              "[Desktop Entry]\nType=Application\nName=Off\nExec=/bin/x\n"
              "X-GNOME-Autostart-enabled=false\n");
    WriteFile(userFolder() + "/kestrel-menu.desktop",
              "[Desktop Entry]\nType=Application\nName=Other copy\nExec=/usr/bin/editor\n");

    ASSERT_EQ(GetCountOfLoginItems(kLoginItemsCurrentUser), 2) << "disabled entries do not count";
    EXPECT_STREQ(ReturnLoginItemPropertyAtIndex(kLoginItemsCurrentUser, kLoginItemPath, 0),
                 "/usr/bin/editor");

    generalSettings.openAtStartup = 1;
    ApplyOpenAtStartupSetting();
    // The taken file name is not overwritten: the new entry gets a name of its own.
    EXPECT_EQ(
        userEntries(),
        (QStringList{QStringLiteral("a-hidden.desktop"), QStringLiteral("b-editor.desktop"),
                     QStringLiteral("c-off.desktop"), QStringLiteral("kestrel-menu-2.desktop"),
                     QStringLiteral("kestrel-menu.desktop")}));
    generalSettings.openAtStartup = 0;
    ApplyOpenAtStartupSetting();
    EXPECT_EQ(userEntries().size(), 4);
}

TEST_F(AutostartFoldersTest, CopiesAreToldApartByTheFileNotThePath) {
    const QByteArray link = env.root() + "/kestrel-menu";
    ASSERT_EQ(::symlink(self.constData(), link.constData()), 0);
    const QByteArray copy = env.root() + "/copy/kestrel-menu";
    WriteFile(copy, "#!/bin/sh\n");
    ::chmod(copy.constData(), 0755);
    const QByteArray notExecutable = env.root() + "/plain/kestrel-menu";
    WriteFile(notExecutable, "data");
    const QByteArray otherName = env.root() + "/install dir/kestrel-menu-helper";
    WriteFile(otherName, "#!/bin/sh\n");
    ::chmod(otherName.constData(), 0755);

    EXPECT_TRUE(autostart.isThisProgram(link));
    EXPECT_FALSE(autostart.isThisProgram(copy));
    EXPECT_TRUE(autostart.isKestrelMenuProgram(copy));
    EXPECT_FALSE(autostart.isKestrelMenuProgram(notExecutable));
    EXPECT_FALSE(autostart.isKestrelMenuProgram(otherName));
    EXPECT_EQ(autostart.thisProgramPath(), self);
}

TEST_F(AutostartFoldersTest, TheSystemListComesFromTheConfigDirs) {
    WriteFile(env.systemConfig() + "/autostart/agent.desktop",
              "[Desktop Entry]\nType=Application\nName=Agent\nExec=agent-binary %U\n"
              "X-Kestrel-Hide=true\n");
    ASSERT_EQ(GetCountOfLoginItems(kLoginItemsAnyUser), 1);
    EXPECT_STREQ(ReturnLoginItemPropertyAtIndex(kLoginItemsAnyUser, kLoginItemPath, 0),
                 "agent-binary")
        << "a name not on PATH stays as written";
    EXPECT_STREQ(ReturnLoginItemPropertyAtIndex(kLoginItemsAnyUser, kLoginItemHide, 0), "true");
}

TEST_F(AutostartFoldersTest, PathsNoEntryCanCarryAreRefused) {
    EXPECT_FALSE(autostart.add(platform::LoginItemsScope::CurrentUser, "/bad\nname", false));
    EXPECT_FALSE(autostart.add(platform::LoginItemsScope::CurrentUser, "/bad\xff", false));
    EXPECT_TRUE(userEntries().isEmpty());
    EXPECT_TRUE(autostart.add(platform::LoginItemsScope::CurrentUser,
                              "/odd \"quoted\" $dollar \\back 100%/kestrel-menu", false));
    EXPECT_STREQ(ReturnLoginItemPropertyAtIndex(kLoginItemsCurrentUser, kLoginItemPath, 0),
                 "/odd \"quoted\" $dollar \\back 100%/kestrel-menu");
}

} // namespace
