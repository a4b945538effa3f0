#include "core/folders.h"
#include "core/lists.h"
#include "core/settings.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakeloginitems.h"
#include "platform/service.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"

#include <QDir>
#include <QFileInfo>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

QByteArray LinkTarget(const QByteArray &path) {
    char buffer[4096];
    const ssize_t length = ::readlink(path.constData(), buffer, sizeof buffer);
    return length < 0 ? QByteArray() : QByteArray(buffer, length);
}

QStringList Entries(const QByteArray &folder) {
    return QDir(QFile::decodeName(folder))
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

class DefaultsTest : public ::testing::Test {
protected:
    DefaultsTest() { loginItems.self = QByteArray("/opt/kestrel/kestrel-menu"); }
    ~DefaultsTest() override {
        while (firstMenuSpec != nullptr)
            RemoveMenuFromPreferences(firstMenuSpec);
        generalSettings = kDefaultGeneralSettings;
    }

    QByteArray menuFolder() const { return env.configHome() + "/Kestrel Menu Items"; }

    TempEnvironment env;
    Installed<platform::FakeAlerts, platform::Alerts> alerts;
    Installed<platform::FakeLoginItems, platform::LoginItems> loginItems;
};

TEST_F(DefaultsTest, FirstRunMakesTheMenuFolderTheTwoMenusAndTheLoginItem) {
    ASSERT_EQ(SetDefaultPreferences(), noErr);

    EXPECT_EQ(Entries(menuFolder()),
              (QStringList{QStringLiteral("Applications"), QStringLiteral("File System"),
                           QStringLiteral("home")}));
    EXPECT_EQ(LinkTarget(menuFolder() + "/home"), env.home());
    EXPECT_EQ(LinkTarget(menuFolder() + "/Applications"), "/usr/share/applications");
    EXPECT_EQ(LinkTarget(menuFolder() + "/File System"), "/");

    ASSERT_EQ(CountLinkedListItems(firstMenuSpec), 2);
    const MenuSpec *left = firstMenuSpec;
    EXPECT_EQ(left->side, kSideLeft);
    EXPECT_EQ(left->contents, kContentsFolder);
    EXPECT_EQ(left->titleKind, kTitleColourPicture);
    EXPECT_EQ(left->folder.path, menuFolder());
    const MenuSpec *right = left->next;
    EXPECT_EQ(right->side, kSideRight);
    EXPECT_EQ(right->contents, kContentsProcesses);
    EXPECT_EQ(right->titleKind, kTitleFrontApplication);
    EXPECT_TRUE(right->folder.path.isEmpty());

    ASSERT_EQ(loginItems.currentUser.size(), 1);
    EXPECT_EQ(loginItems.currentUser[0].path, loginItems.self);
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

TEST_F(DefaultsTest, AnExistingMenuFolderKeepsItsContentsAndGainsThreeLinks) {
    WriteFile(menuFolder() + "/notes.txt", "keep me");
    ASSERT_EQ(::symlink("/elsewhere", (menuFolder() + "/home").constData()), 0);

    ASSERT_EQ(SetDefaultPreferences(), noErr);
    EXPECT_EQ(ReadFile(menuFolder() + "/notes.txt"), "keep me");
    EXPECT_EQ(LinkTarget(menuFolder() + "/home"), "/elsewhere");
    EXPECT_EQ(LinkTarget(menuFolder() + "/home (2)"), env.home());
    EXPECT_EQ(Entries(menuFolder()).size(), 5);
}

TEST_F(DefaultsTest, AMissingHomeOnlyLeavesItsLinkOut) {
    qputenv("HOME", env.root() + "/no-such-home");
    ASSERT_EQ(SetDefaultPreferences(), noErr);
    EXPECT_EQ(Entries(menuFolder()),
              (QStringList{QStringLiteral("Applications"), QStringLiteral("File System")}));
}

TEST_F(DefaultsTest, NoPreferencesFolderIsReportedAndStopsTheDefaults) {
    qunsetenv("XDG_CONFIG_HOME");
    qunsetenv("HOME");
    EXPECT_EQ(SetDefaultPreferences(), fnfErr);
    EXPECT_EQ(alerts.alerts.size(), 1);
    EXPECT_EQ(firstMenuSpec, nullptr);
    EXPECT_TRUE(loginItems.currentUser.isEmpty());
}

TEST_F(DefaultsTest, ARelativeConfigHomeIsIgnored) {
    qputenv("XDG_CONFIG_HOME", "relative/config");
    QByteArray folder;
    ASSERT_EQ(FindPreferencesFolder(&folder, true), noErr);
    EXPECT_EQ(folder, env.home() + "/.config");
}

TEST_F(DefaultsTest, MenusWithoutAFolderLeaveItEmptyAndKeepTheirOrder) {
    OSErr status = paramErr;
    const FSSpec folder{"/srv/menus"};
    MenuSpec *first =
        AddMenuToPreferences(&status, kSideLeft, kContentsFolder, kTitleColourPicture, &folder);
    MenuSpec *second = AddMenuToPreferences(&status, kSideRight, kContentsProcesses,
                                            kTitleFrontApplication, nullptr);
    EXPECT_EQ(status, noErr);
    EXPECT_EQ(firstMenuSpec, first);
    EXPECT_EQ(first->next, second);
    EXPECT_EQ(first->folder.path, "/srv/menus");
    EXPECT_TRUE(second->folder.path.isEmpty());
    EXPECT_EQ(RemoveMenuFromPreferences(first), noErr);
    EXPECT_EQ(firstMenuSpec, second);
}

TEST(StartupVolume, TheClimbStopsAtTheRootOrAfterTenSteps) {
    EXPECT_EQ(ClimbToStartupVolume("/usr/share/applications"), "/");
    EXPECT_EQ(ClimbToStartupVolume("/"), "/");
    EXPECT_TRUE(ClimbToStartupVolume("/no/such/folder/anywhere").isEmpty());

    QTemporaryDir dir;
    QByteArray deep = QFile::encodeName(dir.path());
    QList<QByteArray> levels;
    for (int i = 1; i <= 12; ++i) {
        deep += "/d" + QByteArray::number(i);
        levels.prepend(deep);
    }
    ASSERT_TRUE(QDir().mkpath(QFile::decodeName(deep)));
    // Ten successful lookups from d12 end at d3, short of the root.
    EXPECT_EQ(ClimbToStartupVolume(deep), levels[9]);
}

TEST(Paths, JoiningAndSplittingKeepBytes) {
    EXPECT_EQ(JoinPath("/a", "b"), "/a/b");
    EXPECT_EQ(JoinPath("/", "b"), "/b");
    EXPECT_EQ(ParentPath("/a/b/"), "/a");
    EXPECT_EQ(ParentPath("/a"), "/");
    EXPECT_EQ(ParentPath("/"), "/");
    EXPECT_EQ(LastPathComponent("/a/b\xff/"), "b\xff");
    EXPECT_EQ(LastPathComponent("/"), "");
}

} // namespace
