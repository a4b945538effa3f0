#include "core/folders.h"
#include "core/lists.h"
#include "core/settings.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakeloginitems.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"

#include <QDir>
#include <gtest/gtest.h>

#include <unistd.h>

namespace {

class DefaultsTest : public ::testing::Test {
protected:
    DefaultsTest() { loginItems.self = QByteArray("/opt/kestrel/kestrel-menu"); }
    ~DefaultsTest() override {
        while (firstMenuSpec != nullptr)
            RemoveMenuFromPreferences(firstMenuSpec);
    }

    QByteArray menuFolder() const { return env.configHome() + "/Kestrel Menu Items"; }
    QStringList links() const {
        QStringList links;
        for (const QString &name :
             QDir(QFile::decodeName(menuFolder()))
                 .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name))
            links.append(name + u'>' +
                         QFile::symLinkTarget(QFile::decodeName(menuFolder()) + u'/' + name));
        return links;
    }

    TempEnvironment env;
    Installed<platform::FakeAlerts, platform::Alerts> alerts;
    Installed<platform::FakeLoginItems, platform::LoginItems> loginItems;
};

TEST_F(DefaultsTest, FirstRunMakesTheMenuFolderTheTwoMenusAndTheLoginItem) {
    // A folder left by an earlier installation keeps what it holds.
    WriteFile(menuFolder() + "/notes.txt", "keep me");
    ASSERT_EQ(::symlink("/elsewhere", (menuFolder() + "/home").constData()), 0);
    ASSERT_EQ(SetDefaultPreferences(), noErr);
    const QString home = QFile::decodeName(env.home());
    EXPECT_EQ(links(),
              (QStringList{QStringLiteral("File System>/"),
                           QStringLiteral("applications>/usr/share/applications"),
                           QStringLiteral("home>/elsewhere"), QStringLiteral("home (2)>") + home,
                           QStringLiteral("notes.txt>")}));

    ASSERT_EQ(CountLinkedListItems(firstMenuSpec), 2);
    EXPECT_EQ(firstMenuSpec->folder.path, menuFolder());
    EXPECT_EQ(std::tuple(firstMenuSpec->side, firstMenuSpec->contents, firstMenuSpec->titleKind),
              std::tuple(kSideLeft, kContentsFolder, kTitleColourPicture));
    const MenuSpec *right = firstMenuSpec->next;
    EXPECT_EQ(std::tuple(right->side, right->contents, right->titleKind),
              std::tuple(kSideRight, kContentsProcesses, kTitleFrontApplication));
    ASSERT_EQ(loginItems.currentUser.size(), 1);
    EXPECT_EQ(loginItems.currentUser[0].path, loginItems.self);
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

TEST_F(DefaultsTest, AMissingHomeOnlyLeavesItsLinkOut) {
    qputenv("HOME", env.root() + "/no-such-home");
    ASSERT_EQ(SetDefaultPreferences(), noErr);
    EXPECT_EQ(links().size(), 2);
}

TEST_F(DefaultsTest, NoPreferencesFolderIsReportedAndStopsTheDefaults) {
    qputenv("XDG_CONFIG_HOME", "relative/config"); // ignored, as the base directories say
    qunsetenv("HOME");
    EXPECT_EQ(SetDefaultPreferences(), fnfErr);
    EXPECT_EQ(alerts.alerts.size(), 1);
    EXPECT_EQ(firstMenuSpec, nullptr);
    EXPECT_TRUE(loginItems.currentUser.isEmpty());
}

TEST(StartupVolume, TheClimbStopsAtTheRootOrAfterTenSteps) {
    EXPECT_EQ(ClimbToStartupVolume("/usr/share/applications"), "/");
    EXPECT_TRUE(ClimbToStartupVolume("/no/such/folder/anywhere").isEmpty());
    TempEnvironment env;
    QByteArray deep = env.root();
    QList<QByteArray> levels;
    for (int i = 1; i <= 12; ++i)
        levels.prepend(deep += "/d" + QByteArray::number(i));
    ASSERT_TRUE(QDir().mkpath(QFile::decodeName(deep)));
    // Ten successful lookups from d12 end at d3, short of the root.
    EXPECT_EQ(ClimbToStartupVolume(deep), levels[9]);
}

} // namespace
