#include "core/lists.h"
#include "core/settings.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakeloginitems.h"
#include "platform/doubles/fakenotifications.h"
#include "prefs/prefsfile.h"
#include "prefs/prefsimages.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"

#include <QDir>
#include <QFileInfo>
#include <QtEndian>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

template <typename T> QByteArray BigEndian(T value) {
    const T be = qToBigEndian(value);
    return QByteArray(reinterpret_cast<const char *>(&be), sizeof be);
}

// A block as the file holds it: tag, big-endian length (the data's own unless
// given), data.
QByteArray Block(const char (&tag)[5], const QByteArray &data,
                 std::optional<std::int32_t> length = {}) {
    return QByteArray(tag, 4) + BigEndian(length.value_or(std::int32_t(data.size()))) + data;
}
const QByteArray End = Block("end!", {});

QByteArray Gese(std::uint16_t open, std::uint16_t finder, std::int16_t limit) {
    return BigEndian(open) + BigEndian(finder) + BigEndian(std::uint16_t(1)) +
           BigEndian(std::uint16_t(1)) + BigEndian(limit);
}

// An 88-byte menu image with a link and padding as other writers leave them.
QByteArray Mspc(const char (&codes)[13]) {
    QByteArray name(64, '\0');
    name.replace(0, 6, "\5Items");
    return "LINK" + QByteArray(codes, 12) + BigEndian(std::int16_t(-1)) + BigEndian(1234) + name +
           "PD";
}

class PrefsFileTest : public ::testing::Test {
protected:
    PrefsFileTest() { loginItems.self = QByteArray("/opt/kestrel/kestrel-menu"); }
    ~PrefsFileTest() override {
        while (firstMenuSpec != nullptr)
            RemoveMenuFromPreferences(firstMenuSpec);
        appleMenuSettings = kDefaultAppleMenuSettings;
        generalSettings = kDefaultGeneralSettings;
    }

    QByteArray file() const { return env.configHome() + "/Kestrel Menu Preferences"; }
    QByteArray menuFolder() const { return env.configHome() + "/Kestrel Menu Items"; }
    // "name>target ...", in name order.
    QString links() const {
        const QDir dir(QFile::decodeName(menuFolder()));
        QStringList links;
        for (const QString &name :
             dir.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name))
            links.append(name + u'>' + QFile::symLinkTarget(dir.filePath(name)));
        return links.join(u' ');
    }
    QList<const MenuSpec *> menus() const {
        QList<const MenuSpec *> list;
        for (const MenuSpec *spec = firstMenuSpec; spec != nullptr; spec = spec->next)
            list.append(spec);
        return list;
    }

    TempEnvironment env;
    Installed<platform::FakeAlerts, platform::Alerts> alerts;
    Installed<platform::FakeLoginItems, platform::LoginItems> loginItems;
    Installed<platform::FakeNotifications, platform::Notifications> notifications;
};

TEST_F(PrefsFileTest, NoFileIsAFirstRunMenuFolderTwoMenusAndALoginItem) {
    // A folder left by an earlier installation keeps what it holds.
    WriteFile(menuFolder() + "/notes.txt", "keep me");
    ASSERT_EQ(::symlink("/elsewhere", (menuFolder() + "/home").constData()), 0);
    ASSERT_EQ(LoadPreferences(), noErr);
    EXPECT_EQ(links(), QStringLiteral("Applications>/usr/share/applications File System>/ "
                                      "home>/elsewhere home (2)>%1 notes.txt>")
                           .arg(QFile::decodeName(env.home())));

    QByteArray codes;
    for (const MenuSpec *menu : menus())
        codes +=
            BigEndian(menu->side) + BigEndian(menu->contents) + BigEndian(menu->titleKind) + ' ';
    EXPECT_EQ(codes, "leftfoldclap rghtproccuap ");
    EXPECT_EQ(firstMenuSpec->folder.path, menuFolder());
    ASSERT_EQ(loginItems.currentUser.size(), 1);
    EXPECT_EQ(loginItems.currentUser[0].path, loginItems.self);
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

TEST_F(PrefsFileTest, BlocksFillTheRecordsWhateverTheirLengthAndOrder) {
    appleMenuSettings = {kColourBlue, 3, shiftKey, kAreaCentre};
    const QByteArray oddPath = "/srv/my menus/caf\xc3\xa9 \xff\xfe";
    WriteFile(file(), Block("mals", "orphan") + Block("mpth", "/orphan") + Block("apse", "gren") +
                          Block("mspc", Mspc("leftfoldclap") + "12 surplus b") +
                          Block("mals", QByteArray("\0alias\1", 7)) + Block("mpth", oddPath) +
                          Block("zzzz", QByteArray(37, 'u')) + Block("mspc", Mspc("rghtproccuap")) +
                          Block("mpth", "relative/path") + Block("mspc", Mspc("leftfoldclap")) +
                          Block("mpth", QByteArray("/nul\0byte", 9)) +
                          Block("gese", Gese(0, 1, 300) + "surplus") + End + "after the end");
    ASSERT_EQ(LoadPreferences(), noErr);
    // A short block replaces only its leading fields.
    EXPECT_EQ(appleMenuSettings.iconColour, kColourGreen);
    EXPECT_EQ(appleMenuSettings.hideArea, kAreaCentre);
    EXPECT_EQ(generalSettings.finderToFront, 1);
    EXPECT_EQ(generalSettings.subMenuIconLimit, 300);
    // Alias and path blocks belong to the menu before them; only an absolute
    // path without NUL bytes names a folder.
    ASSERT_EQ(menus().size(), 3);
    EXPECT_EQ(menus()[0]->titleKind, kTitleColourPicture);
    EXPECT_EQ(menus()[0]->folder.path, oddPath);
    EXPECT_EQ(menus()[0]->folderAlias, QByteArray("\0alias\1", 7));
    EXPECT_EQ(menus()[1]->side, kSideRight);
    EXPECT_TRUE(menus()[1]->folder.path.isEmpty());
    EXPECT_TRUE(menus()[2]->folder.path.isEmpty());
    EXPECT_TRUE(alerts.alerts.isEmpty());
    EXPECT_FALSE(QDir(QFile::decodeName(menuFolder())).exists()) << "no first run";
}

TEST_F(PrefsFileTest, WhatCannotBeLoadedIsNamedInOneAlertAndLeftAsItWas) {
    const QByteArray start = Block("apse", "blue");
    struct Case {
        const char *what;
        QByteArray contents;
        OSErr status;
        std::function<void(const QByteArray &)> make = nullptr;
    };
    const auto huge = [](const QByteArray &path) {
        WriteFile(path, {});
        ::truncate(path.constData(), 1LL << 30);
    };
    const auto pipe = [](const QByteArray &path) { ::mkfifo(path.constData(), 0600); };
    const auto loop = [](const QByteArray &path) { ::symlink(path.constData(), path.constData()); };
    const Case cases[] = {
        {"no end block", start, eofErr},
        {"cut inside data", start + Block("gese", "\0\1\0", 10), eofErr},
        {"negative length", start + Block("gese", {}, -2), paramErr},
        {"skip back onto its own tag", start + Block("zzzz", {}, -8) + End, posErr},
        {"over 1 MB (refused at once, never read)", {}, fsDataTooBigErr, huge},
        {"a pipe (never waited on)", {}, notAFileErr, pipe},
        {"a link loop", {}, ioErr, loop},
    };
    const auto identity = [](const QByteArray &path) {
        const QFileInfo info(QFile::decodeName(path));
        return std::tuple(info.size(), info.lastModified(), info.permissions(), info.isSymLink());
    };
    for (const Case &c : cases) {
        ::unlink(file().constData());
        if (c.make)
            c.make(file());
        else
            WriteFile(file(), c.contents);
        const auto before = identity(file());
        alerts.alerts.clear();
        EXPECT_EQ(LoadPreferences(), c.status) << c.what;
        ASSERT_EQ(alerts.alerts.size(), 1) << c.what;
        EXPECT_EQ(alerts.alerts[0].status, c.status) << c.what;
        EXPECT_TRUE(alerts.alerts[0].headline.contains(QFile::decodeName(file()))) << c.what;
        EXPECT_EQ(identity(file()), before) << c.what;
        EXPECT_FALSE(QDir(QFile::decodeName(menuFolder())).exists()) << "no first run: " << c.what;
    }
}

TEST_F(PrefsFileTest, SavingWritesTheBlocksByteForByte) {
    appleMenuSettings = {kColourGreen, 2, controlKey, kAreaTop};
    generalSettings = {1, 0, 1, 1, -5};
    // The folder image's 63-byte name never splits a character; the path block
    // keeps every byte.
    const QByteArray name = QByteArray(61, 'x') + "\xe2\x82\xac\xe2\x82\xac";
    const FSSpec folder{env.root() + '/' + name};
    ASSERT_TRUE(QDir().mkpath(QFile::decodeName(folder.path)));
    OSErr status = noErr;
    AddMenuToPreferences(&status, kSideLeft, kContentsFolder, kTitleColourPicture, &folder)
        ->folderAlias = QByteArray("\x01\x02alias", 7);
    AddMenuToPreferences(&status, kSideRight, kContentsProcesses, kTitleFrontApplication, nullptr);
    ASSERT_EQ(SavePreferences(), noErr);

    struct stat parent {};
    ASSERT_EQ(::stat(env.root().constData(), &parent), 0);
    const QByteArray image = BigEndian(std::int16_t(-1 - std::int16_t(parent.st_dev % 32767))) +
                             BigEndian(std::uint32_t(parent.st_ino)) + '\x3d' + name.left(61) +
                             QByteArray(2, '\0');
    const QByteArray noLink(4, '\0');
    const QByteArray expected =
        Block("apse",
              "gren" + BigEndian(std::int16_t(2)) + BigEndian(std::uint16_t(controlKey)) + "top ") +
        Block("mspc", noLink + "leftfoldclap" + image + QByteArray(2, '\0')) +
        Block("mals", QByteArray("\x01\x02alias", 7)) + Block("mpth", folder.path) +
        Block("mspc", noLink + "rghtproccuap" + QByteArray(72, '\0')) +
        Block("gese", Gese(1, 0, -5)) + End;
    EXPECT_EQ(ReadFile(file()).toHex(' '), expected.toHex(' '));
    EXPECT_EQ(QDir(QFile::decodeName(env.configHome())).entryList(QDir::Files).size(), 1)
        << "no temporary file is left behind";
}

TEST_F(PrefsFileTest, OnlyTemporaryFilesOfEarlierSavesAreRemoved) {
    // The preferences file is a link: its saves were written beside its target.
    const QByteArray dotfiles = env.root() + "/dotfiles/";
    WriteFile(dotfiles + "prefs", End);
    ASSERT_EQ(::symlink((dotfiles + "prefs").constData(), file().constData()), 0);
    const QByteArray old[] = {"prefs.a1B2c3", "prefs.tmp", "prefs.Q1w2E3/", "prefs.x9Y8z!"};
    for (const QByteArray &name : old) {
        WriteFile(dotfiles + name + (name.endsWith('/') ? "inside" : ""), "x");
        const timespec longAgo[2] = {{1000, 0}, {1000, 0}};
        ::utimensat(AT_FDCWD, (dotfiles + name).constData(), longAgo, 0);
    }
    WriteFile(dotfiles + "prefs.n0W0n0", "a save under way");
    ASSERT_EQ(LoadPreferences(), noErr);
    QStringList left =
        QDir(QFile::decodeName(dotfiles)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    left.sort();
    EXPECT_EQ(left, (QStringList{QStringLiteral("prefs"), QStringLiteral("prefs.Q1w2E3"),
                                 QStringLiteral("prefs.n0W0n0"), QStringLiteral("prefs.tmp"),
                                 QStringLiteral("prefs.x9Y8z!")}));
}

} // namespace
