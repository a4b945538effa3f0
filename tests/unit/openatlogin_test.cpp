#include "core/settings.h"
#include "platform/doubles/fakeloginitems.h"
#include "platform/xdgautostart.h"
#include "prefs/openatlogin.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"

#include <QDir>
#include <QProcess>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using platform::LoginItem;
constexpr const char *kSelf = "/opt/kestrel/kestrel-menu";
constexpr const char *kOtherCopy = "/old/copy/kestrel-menu";

class OpenAtLoginTest : public ::testing::Test {
protected:
    OpenAtLoginTest() { store.kestrelPrograms = {kSelf, kOtherCopy}; }
    ~OpenAtLoginTest() override { generalSettings = kDefaultGeneralSettings; }

    Installed<platform::FakeLoginItems, platform::LoginItems> store;
};

// A list is written "name:path name:path ..."; a name alone has no program;
// "K" stands for this copy's path, "O" for another copy's.
TEST_F(OpenAtLoginTest, ExactlyOneEntryForThisCopyWhileOnNoneWhileOff) {
    struct Case {
        bool on;
        const char *before;
        const char *after;
        bool selfKnown = true;
    };
    const Case cases[] = {
        {true, "m:/usr/bin/mail", "m:/usr/bin/mail added-1:K"},
        {true, "a:K b:O c:/usr/bin/editor d:K", "c:/usr/bin/editor d:K"},
        {true, "b:O", "added-1:K"},
        {false, "a:K b:O c:/gone d", "c:/gone d"},
        {true, "b:O", "", false}, // this copy cannot be told: as if off
    };
    const auto path = [](QByteArray text) {
        return text.replace('K', kSelf).replace('O', kOtherCopy);
    };
    for (const Case &c : cases) {
        store.currentUser.clear();
        store.nextEntry = 1;
        for (const QByteArray &entry : QByteArray(c.before).split(' ')) {
            const QList<QByteArray> parts = entry.split(':');
            store.currentUser.append(
                LoginItem{QString::fromLatin1(parts[0]),
                          parts.size() > 1 ? std::optional(path(parts[1])) : std::nullopt, false});
        }
        store.self = c.selfKnown ? std::optional<QByteArray>(kSelf) : std::nullopt;
        generalSettings.openAtStartup = c.on;
        for (int time = 1; time <= 2; ++time) { // applying again changes nothing
            ApplyOpenAtStartupSetting();
            QList<QByteArray> after;
            for (const LoginItem &item : store.currentUser) {
                after.append(item.entryName.toLatin1() + (item.path ? ':' + *item.path : ""));
                EXPECT_EQ(item.hide, false) << "never asked to stay hidden";
            }
            EXPECT_EQ(after.join(' '), path(c.after)) << c.before << ", time " << time;
        }
    }
}

// The same rules on the real autostart folders.
class AutostartFoldersTest : public ::testing::Test {
protected:
    AutostartFoldersTest() { makeProgram(self); }
    ~AutostartFoldersTest() override { generalSettings = kDefaultGeneralSettings; }

    static void makeProgram(const QByteArray &path, mode_t mode = 0755) {
        WriteFile(path, "#!/bin/sh\n");
        ::chmod(path.constData(), mode);
    }
    QByteArray userFolder() const { return env.configHome() + "/autostart/"; }
    QStringList userEntries() const {
        return QDir(QFile::decodeName(userFolder())).entryList(QDir::Files, QDir::Name);
    }

    TempEnvironment env;
    QByteArray self{env.root() + "/install \\dir/kestrel-menu"};
    platform::XdgAutostart autostart{self};
    platform::ScopedService<platform::LoginItems> installed{&autostart};
};

TEST_F(AutostartFoldersTest, TheEntryWrittenIsValidAndTakesAFreeName) {
    WriteFile(userFolder() + "kestrel-menu.desktop",
              "[Desktop Entry]\nType=Application\nName=Taken\nExec=/usr/bin/editor\n");
    WriteFile(userFolder() + "a-off.desktop",
              "[Desktop Entry]\nType=Application\nName=Off\nExec=\"" + self +
                  "\"\nX-GNOME-Autostart-enabled=false\n");
    generalSettings.openAtStartup = 1;
    ApplyOpenAtStartupSetting();
    // A taken file name is never overwritten; disabled entries are no entries.
    const QByteArray file = userFolder() + "kestrel-menu-2.desktop";
    QProcess validate;
    validate.start(QStringLiteral("desktop-file-validate"), {QFile::decodeName(file)});
    ASSERT_TRUE(validate.waitForFinished());
    EXPECT_EQ(validate.exitCode(), 0);
    EXPECT_EQ(validate.readAllStandardOutput(), "");

    generalSettings.openAtStartup = 0;
    ApplyOpenAtStartupSetting();
    EXPECT_EQ(userEntries(), (QStringList{QStringLiteral("a-off.desktop"),
                                          QStringLiteral("kestrel-menu.desktop")}));
    EXPECT_FALSE(autostart.add(platform::LoginItemsScope::CurrentUser, "/bad\nname", false));
    EXPECT_FALSE(autostart.add(platform::LoginItemsScope::CurrentUser, "/bad\xff", false));
    EXPECT_EQ(userEntries().size(), 2);
}

TEST_F(AutostartFoldersTest, CopiesAreToldApartByTheFileNotThePath) {
    const QByteArray link = env.root() + "/kestrel-menu";
    ASSERT_EQ(::symlink(self.constData(), link.constData()), 0);
    makeProgram(env.root() + "/copy/kestrel-menu");
    makeProgram(env.root() + "/plain/kestrel-menu", 0644);
    EXPECT_TRUE(autostart.isThisProgram(link));
    EXPECT_FALSE(autostart.isThisProgram(env.root() + "/copy/kestrel-menu"));
    EXPECT_TRUE(autostart.isKestrelMenuProgram(env.root() + "/copy/kestrel-menu"));
    EXPECT_FALSE(autostart.isKestrelMenuProgram(env.root() + "/plain/kestrel-menu"));
}

} // namespace
