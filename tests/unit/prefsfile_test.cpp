#include "core/lists.h"
#include "core/settings.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakeloginitems.h"
#include "platform/service.h"
#include "prefs/prefsfile.h"
#include "prefs/prefsimages.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"

#include <QDir>
#include <QtEndian>
#include <gtest/gtest.h>

#include <sys/mount.h>
#include <sys/stat.h>

namespace {

QByteArray BigEndian32(std::uint32_t value) {
    const std::uint32_t be = qToBigEndian(value);
    return QByteArray(reinterpret_cast<const char *>(&be), 4);
}
QByteArray BigEndian16(std::uint16_t value) {
    const std::uint16_t be = qToBigEndian(value);
    return QByteArray(reinterpret_cast<const char *>(&be), 2);
}

// A block as the file holds it: tag, big-endian length, data.
QByteArray Block(const char (&tag)[5], const QByteArray &data) {
    return QByteArray(tag, 4) + BigEndian32(std::uint32_t(data.size())) + data;
}
QByteArray BlockClaiming(const char (&tag)[5], std::int32_t length, const QByteArray &data) {
    return QByteArray(tag, 4) + BigEndian32(std::uint32_t(length)) + data;
}

QByteArray End() {
    return Block("end!", {});
}

QByteArray Apse(const char (&colour)[5], std::int16_t mode, std::uint16_t modifiers,
                const char (&area)[5]) {
    return QByteArray(colour, 4) + BigEndian16(std::uint16_t(mode)) + BigEndian16(modifiers) +
           QByteArray(area, 4);
}

QByteArray Gese(std::uint16_t a, std::uint16_t b, std::uint16_t c, std::uint16_t d,
                std::int16_t limit) {
    return BigEndian16(a) + BigEndian16(b) + BigEndian16(c) + BigEndian16(d) +
           BigEndian16(std::uint16_t(limit));
}

// An 88-byte menu image with an arbitrary link and padding, as other writers leave them.
QByteArray Mspc(const char (&side)[5], const char (&contents)[5], const char (&kind)[5]) {
    QByteArray image =
        QByteArray("LINK") + QByteArray(side, 4) + QByteArray(contents, 4) + QByteArray(kind, 4);
    image += BigEndian16(std::uint16_t(-1)) + BigEndian32(1234);
    QByteArray name(64, '\0');
    name[0] = 5;
    name.replace(1, 5, "Items");
    return image + name + "PD";
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

    OSErr load(const QByteArray &contents) {
        WriteFile(file(), contents);
        return LoadPreferences();
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
};

TEST_F(PrefsFileTest, OnlyTheEndBlockLoadsNothingAndChangesNothing) {
    appleMenuSettings = {kColourBlue, 2, shiftKey, kAreaCentre};
    EXPECT_EQ(load(End()), noErr);
    EXPECT_EQ(firstMenuSpec, nullptr);
    EXPECT_EQ(appleMenuSettings.iconColour, kColourBlue);
    EXPECT_EQ(appleMenuSettings.hideArea, kAreaCentre);
    EXPECT_TRUE(alerts.alerts.isEmpty());
    EXPECT_FALSE(QDir(QFile::decodeName(env.configHome() + "/Kestrel Menu Items")).exists())
        << "an existing file is never replaced by the first-run defaults";
}

TEST_F(PrefsFileTest, AShortBlockFillsOnlyItsLeadingFields) {
    appleMenuSettings = {kColourBlue, 3, shiftKey, kAreaCentre};
    generalSettings = {0, 0, 0, 0, -7};
    EXPECT_EQ(load(Block("apse", QByteArray("gren")) + Block("gese", BigEndian16(1)) + End()),
              noErr);
    EXPECT_EQ(appleMenuSettings.iconColour, kColourGreen);
    EXPECT_EQ(appleMenuSettings.hideMode, 3);
    EXPECT_EQ(appleMenuSettings.hideModifiers, shiftKey);
    EXPECT_EQ(appleMenuSettings.hideArea, kAreaCentre);
    EXPECT_EQ(generalSettings.openAtStartup, 1);
    EXPECT_EQ(generalSettings.subMenuIconLimit, -7);
}

TEST_F(PrefsFileTest, LongBlocksAndUnknownTagsAreSkippedByTheirLength) {
    const QByteArray longMenu = Mspc("left", "fold", "clap") + QByteArray(12, '\x7f');
    const QByteArray contents = Block("mspc", longMenu) + Block("zzzz", QByteArray(37, 'u')) +
                                Block("gese", Gese(0, 1, 0, 1, 300)) +
                                Block("apse", Apse("red ", 2, cmdKey, "outs") + "surplus") + End();
    ASSERT_EQ(load(contents), noErr);
    ASSERT_EQ(menus().size(), 1);
    EXPECT_EQ(menus()[0]->side, kSideLeft);
    EXPECT_EQ(menus()[0]->contents, kContentsFolder);
    EXPECT_EQ(menus()[0]->titleKind, kTitleColourPicture);
    EXPECT_TRUE(menus()[0]->folder.path.isEmpty()) << "no path block, no folder";
    EXPECT_EQ(generalSettings.finderToFront, 1);
    EXPECT_EQ(generalSettings.openAtStartup, 0);
    EXPECT_EQ(generalSettings.subMenuIconLimit, 300);
    EXPECT_EQ(appleMenuSettings.iconColour, kColourRed);
    EXPECT_EQ(appleMenuSettings.hideMode, 2);
    EXPECT_EQ(appleMenuSettings.hideModifiers, cmdKey);
    EXPECT_EQ(appleMenuSettings.hideArea, kAreaOutside);
}

TEST_F(PrefsFileTest, AliasAndPathBlocksBelongToTheMenuBeforeThem) {
    const QByteArray oddPath = "/srv/my menus/caf\xc3\xa9 \xff\xfe";
    const QByteArray contents =
        Block("mals", "orphan alias") + Block("mpth", "/orphan") +
        Block("mspc", Mspc("left", "fold", "clap")) + Block("mals", QByteArray("\0alias\1", 7)) +
        Block("mpth", oddPath) + Block("mspc", Mspc("rght", "proc", "cuap")) +
        Block("mpth", "relative/path") + Block("mspc", Mspc("left", "fold", "clap")) +
        Block("mpth", QByteArray("/nul\0byte", 9)) + End();
    ASSERT_EQ(load(contents), noErr);
    ASSERT_EQ(menus().size(), 3);
    EXPECT_EQ(menus()[0]->folder.path, oddPath);
    EXPECT_EQ(menus()[0]->folderAlias, QByteArray("\0alias\1", 7));
    EXPECT_TRUE(menus()[1]->folder.path.isEmpty()) << "only an absolute path names a folder";
    EXPECT_TRUE(menus()[1]->folderAlias.isEmpty());
    EXPECT_TRUE(menus()[2]->folder.path.isEmpty());
}

TEST_F(PrefsFileTest, ACutFileStopsTheLoadWithAnAlertAndKeepsWhatWasRead) {
    const QByteArray start = Block("apse", Apse("blue", 2, shiftKey, "bott"));
    struct Case {
        const char *what;
        QByteArray tail;
        OSErr status;
    };
    const Case cases[] = {
        {"no end block", {}, eofErr},
        {"cut inside a tag", "ges", eofErr},
        {"cut inside a length", QByteArray("gese\0\0", 6), eofErr},
        {"cut inside data", BlockClaiming("gese", 10, "\0\1\0"), eofErr},
        {"cut inside a menu", BlockClaiming("mspc", 88, Mspc("left", "fold", "clap").left(40)),
         eofErr},
        {"alias longer than the file", BlockClaiming("mals", 0x7fffffff, "abc"), eofErr},
        {"negative record length", BlockClaiming("gese", -2, {}), paramErr},
        {"negative alias length", BlockClaiming("mals", -1, {}), paramErr},
        {"skip back onto its own tag", BlockClaiming("zzzz", -8, {}) + End(), posErr},
        {"skip before the file", BlockClaiming("zzzz", -1000, {}) + End(), posErr},
    };
    for (const Case &c : cases) {
        appleMenuSettings = kDefaultAppleMenuSettings;
        alerts.alerts.clear();
        const QByteArray contents = start + c.tail;
        EXPECT_EQ(load(contents), c.status) << c.what;
        ASSERT_EQ(alerts.alerts.size(), 1) << c.what;
        EXPECT_EQ(alerts.alerts[0].status, c.status) << c.what;
        EXPECT_TRUE(alerts.alerts[0].headline.contains(QStringLiteral("Kestrel Menu Preferences")))
            << c.what;
        EXPECT_EQ(appleMenuSettings.iconColour, kColourBlue) << c.what;
        EXPECT_EQ(ReadFile(file()), contents) << "the file stays as it was: " << c.what;
    }
    EXPECT_EQ(menus().size(), 0);
}

TEST_F(PrefsFileTest, ABackwardSkipThatStillMovesOnEndsTheLoad) {
    // -4 lands inside the block's own header; the load re-reads bytes as a new
    // block but always moves forward, so it ends.
    EXPECT_NE(load(BlockClaiming("zzzz", -4, {}) + "end!"), noErr);
}

TEST_F(PrefsFileTest, NoFileOrNoRegularFileMeansFirstRunDefaults) {
    ASSERT_EQ(LoadPreferences(), noErr);
    EXPECT_EQ(menus().size(), 2);
    EXPECT_TRUE(QDir(QFile::decodeName(env.configHome() + "/Kestrel Menu Items")).exists());
    while (firstMenuSpec != nullptr)
        RemoveMenuFromPreferences(firstMenuSpec);

    ASSERT_EQ(::mkfifo(file().constData(), 0600), 0);
    EXPECT_EQ(LoadPreferences(), noErr) << "a pipe of that name is not read (nor waited on)";
    EXPECT_EQ(menus().size(), 2);
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

TEST_F(PrefsFileTest, SavingWritesTheBlocksByteForByte) {
    appleMenuSettings = {kColourGreen, 2, controlKey, kAreaTop};
    generalSettings = {1, 0, 1, 0, -5};
    const QByteArray folder = env.root() + "/Menu folder";
    ASSERT_TRUE(QDir().mkpath(QFile::decodeName(folder)));
    OSErr status = noErr;
    const FSSpec spec{folder};
    MenuSpec *menu =
        AddMenuToPreferences(&status, kSideLeft, kContentsFolder, kTitleColourPicture, &spec);
    menu->folderAlias = QByteArray("\x01\x02alias", 7);
    AddMenuToPreferences(&status, kSideRight, kContentsProcesses, kTitleFrontApplication, nullptr);
    ASSERT_EQ(SavePreferences(), noErr);

    struct stat parent {};
    ASSERT_EQ(::stat(env.root().constData(), &parent), 0);
    QByteArray folderImage = BigEndian16(std::uint16_t(-1 - std::int16_t(parent.st_dev % 32767))) +
                             BigEndian32(std::uint32_t(parent.st_ino));
    QByteArray name(64, '\0');
    name[0] = 11;
    name.replace(1, 11, "Menu folder");
    folderImage += name;
    const QByteArray noLink(4, '\0');
    const QByteArray expected =
        Block("apse", Apse("gren", 2, controlKey, "top ")) +
        Block("mspc", noLink + "leftfoldclap" + folderImage + QByteArray(2, '\0')) +
        Block("mals", QByteArray("\x01\x02alias", 7)) + Block("mpth", folder) +
        Block("mspc", noLink + "rghtproccuap" + QByteArray(72, '\0')) +
        Block("gese", Gese(1, 0, 1, 0, -5)) + End();
    EXPECT_EQ(ReadFile(file()).toHex(' '), expected.toHex(' '));
    EXPECT_EQ(QDir(QFile::decodeName(env.configHome())).entryList(QDir::Files),
              QStringList{QStringLiteral("Kestrel Menu Preferences")})
        << "no temporary file is left behind";
}

TEST_F(PrefsFileTest, OddFolderNamesRoundTrip) {
    const QByteArray names[] = {
        "/srv/two words",
        "/srv/caf\xc3\xa9",
        "/srv/bad\xff\xfe\x80",
        "/srv/line\nbreak",
        "/srv/" + QByteArray(255, 'n'),
        "/srv/" + QByteArray(61, 'x') + "\xe2\x82\xac\xe2\x82\xac",
    };
    OSErr status = noErr;
    for (const QByteArray &path : names) {
        const FSSpec spec{path};
        AddMenuToPreferences(&status, kSideLeft, kContentsFolder, kTitleColourPicture, &spec)
            ->folderAlias = path.left(9);
    }
    ASSERT_EQ(SavePreferences(), noErr);
    while (firstMenuSpec != nullptr)
        RemoveMenuFromPreferences(firstMenuSpec);
    ASSERT_EQ(LoadPreferences(), noErr);
    ASSERT_EQ(menus().size(), qsizetype(std::size(names)));
    for (qsizetype i = 0; i < menus().size(); ++i) {
        EXPECT_EQ(menus()[i]->folder.path, names[i]);
        EXPECT_EQ(menus()[i]->folderAlias, names[i].left(9));
    }
    // The 63-byte name of the folder image never splits a character.
    const FSSpecImage image = MakeFSSpecImage(FSSpec{names[5]});
    EXPECT_EQ(image.name[0], 61);
}

TEST_F(PrefsFileTest, AFailedSaveLeavesThePreviousFileIntact) {
    const QByteArray small = env.root() + "/small";
    ASSERT_TRUE(QDir().mkpath(QFile::decodeName(small)));
    if (::mount("kestrel-test", small.constData(), "tmpfs", 0, "size=8k") != 0)
        GTEST_SKIP() << "cannot mount a small tmpfs here: run as root to check a full disk";
    qputenv("XDG_CONFIG_HOME", small);
    const QByteArray previous = Block("apse", Apse("blue", 1, cmdKey, "left")) + End();
    WriteFile(small + "/Kestrel Menu Preferences", previous);
    WriteFile(small + "/filler", QByteArray(4096, 'f')); // leaves less room than a save needs

    OSErr status = noErr;
    const FSSpec spec{"/srv/" + QByteArray(200, 'p')};
    for (int i = 0; i < 40; ++i)
        AddMenuToPreferences(&status, kSideLeft, kContentsFolder, kTitleColourPicture, &spec);
    const OSErr saved = SavePreferences();
    const QByteArray after = ReadFile(small + "/Kestrel Menu Preferences");
    const QStringList entries = QDir(QFile::decodeName(small)).entryList(QDir::Files);
    ::umount(small.constData());
    EXPECT_EQ(saved, dskFulErr);
    EXPECT_EQ(after, previous);
    EXPECT_EQ(entries.size(), 2) << "the temporary file is removed";
}

TEST(ByteOrder, ConvertersSwapOnLittleEndianAndDoNothingOnBigEndian) {
    using namespace byteorder;
    AppleMenuSettings apse{FourCC("rbow"), 0x0102, 0x1000, FourCC("left")};
    AppleMenuSettings copy = apse;
    ConvertAppleMenuSettings<std::endian::big>(&copy);
    EXPECT_EQ(std::memcmp(&copy, &apse, sizeof apse), 0);
    ConvertAppleMenuSettings<std::endian::little>(&copy);
    EXPECT_EQ(copy.iconColour, 0x776F6272u);
    EXPECT_EQ(copy.hideMode, 0x0201);
    EXPECT_EQ(copy.hideModifiers, 0x0010);
    EXPECT_EQ(copy.hideArea, 0x7466656Cu);
    ConvertAppleMenuSettings<std::endian::little>(&copy);
    EXPECT_EQ(std::memcmp(&copy, &apse, sizeof apse), 0) << "load undoes save";

    GeneralSettings gese{1, 0x0200, 3, 4, -2};
    GeneralSettings swapped = gese;
    ConvertGeneralSettings<std::endian::little>(&swapped);
    EXPECT_EQ(swapped.openAtStartup, 0x0100);
    EXPECT_EQ(swapped.finderToFront, 0x0002);
    EXPECT_EQ(swapped.subMenuIconLimit, std::int16_t(0xFEFF));
    ConvertGeneralSettings<std::endian::big>(&swapped);
    EXPECT_EQ(swapped.openAtStartup, 0x0100);

    MenuSpecImage menu{};
    menu.link = 0xAABBCCDD;
    menu.side = FourCC("left");
    menu.folder.vRefNum = -2;
    menu.folder.parID = 0x01020304;
    menu.folder.name[0] = 3;
    menu.padding = 0x1234;
    MenuSpecImage swappedMenu = menu;
    ConvertMenuSpec<std::endian::little>(&swappedMenu);
    // Packed fields are compared as copies: no reference may bind to them.
    const auto value = [](auto field) { return field; };
    EXPECT_EQ(value(swappedMenu.link), 0xAABBCCDDu) << "the link is left alone";
    EXPECT_EQ(value(swappedMenu.padding), 0x1234) << "the padding is left alone";
    EXPECT_EQ(value(swappedMenu.side), FourCC("tfel"));
    EXPECT_EQ(value(swappedMenu.folder.vRefNum), std::int16_t(0xFEFF));
    EXPECT_EQ(value(swappedMenu.folder.parID), 0x04030201);
    EXPECT_EQ(swappedMenu.folder.name[0], 3);
}

} // namespace
