// Reading a folder for its menu: what shows, in which order, under which text
// and icon, and what a launcher's folder leaves out.
#include "foldermenu_testfolder.h"
#include "foldermenus/folderentries.h"
#include "platform/doubles/faketrustmarks.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"

#include <QFileInfo>
#include <QRandomGenerator>
#include <QStringList>
#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

QStringList Texts(const FolderListing &listing) {
    QStringList texts;
    for (const FolderEntry &entry : listing.entries)
        texts.append(entry.text);
    return texts;
}

const FolderEntry *Find(const FolderListing &listing, const QString &text) {
    for (const FolderEntry &entry : listing.entries) {
        if (entry.text == text)
            return &entry;
    }
    ADD_FAILURE() << "no item " << qPrintable(text);
    return nullptr;
}

// The ordering as the menu defines it, written out step by step: each name is
// inserted after comparing with the last item, then by binary search.
QStringList InsertOneByOne(const QList<QByteArray> &enumeration) {
    const auto before = [](const QString &a, const QString &b) {
        return QString::compare(a.normalized(QString::NormalizationForm_D),
                                b.normalized(QString::NormalizationForm_D),
                                Qt::CaseInsensitive) < 0;
    };
    QStringList items;
    for (const QByteArray &raw : enumeration) {
        const QString name = QFile::decodeName(raw);
        const qsizetype count = items.size();
        qsizetype position = count + 1; // 1-based
        if (count > 0 && before(name, items[count - 1])) {
            qsizetype lo = 1, hi = count;
            while (count > 1 && hi > lo) {
                const qsizetype mid = (lo + hi) / 2;
                if (before(name, items[mid - 1]))
                    hi = mid;
                else
                    lo = mid + 1;
            }
            position = count <= 1 ? count : hi;
        }
        items.insert(position - 1, name);
    }
    return items;
}

TEST(FolderEntries, OrderIsThatOfInsertingOneByOne) {
    // Names that tie under case and accents, prefixes, digits and punctuation.
    Folder folder;
    const QList<QByteArray> parts{"a", "A",  "b",        "\xc3\xa9", "e\xcc\x81", "E",
                                  "1", "10", "9",        ">>",       "-",         " ",
                                  "_", "z",  "\xc3\x84", "\xc3\x9f", "ss"};
    QRandomGenerator random(4);
    QSet<QByteArray> made;
    while (made.size() < 400) {
        QByteArray name;
        for (int i = 0, length = 1 + random.bounded(4); i < length; ++i)
            name += parts[random.bounded(int(parts.size()))];
        if (!made.contains(name)) {
            made.insert(name);
            folder.touch(name);
        }
    }
    QStringList names;
    for (const FolderEntry &entry : ReadFolderEntries(folder.path(), 0).entries)
        names.append(entry.name);
    EXPECT_EQ(names, InsertOneByOne(folder.enumerationOrder()));
}

TEST(FolderEntries, SortPrefixesSeparatorsAndHiddenNames) {
    Folder folder;
    for (const char *name : {"01>>Zeta", "Alpha", "x>>-", "-", ">>", "b>>c>>d", "Foo", "foo",
                             "Foo ", "Bar", "Last", ".profile"})
        folder.touch(name);
    // CR, LF and CR LF end lines; no trimming; the unterminated last line is ignored.
    folder.touch(".hidden", "Foo\rBar\r\n\nLast");
    const FolderListing listing = ReadFolderEntries(folder.path(), 0);
    // Ordered by the full name, shown without the prefix; "-" alone is an item.
    EXPECT_EQ(
        Texts(listing),
        (QStringList{
            u"-"_s, u"Zeta"_s, {}, u"Alpha"_s, u"c>>d"_s, u"foo"_s, u"Foo "_s, u"Last"_s, u"-"_s}));
    EXPECT_FALSE(listing.entries.front().separator);
    EXPECT_TRUE(listing.entries.back().separator);
    EXPECT_EQ(listing.found, 13u); // hidden entries count as found

    EXPECT_EQ(HiddenNamesFromFile(QByteArray(255, 'x') + '\n'),
              (std::vector<QByteArray>{QByteArray(255, 'x')}));
    // 256 bytes wrap the length to 0 and the line starts over from the front.
    EXPECT_EQ(HiddenNamesFromFile(QByteArray(256, 'x') + "Foo\n"), std::vector<QByteArray>{"Foo"});
}

TEST(FolderEntries, MissingUnreadableAndVolumeRootFolders) {
    Folder folder;
    folder.touch("file");
    folder.touch("mach");
    folder.touch("mach.sym");
    EXPECT_EQ(ReadFolderEntries(folder.at("missing"), 0).status, fnfErr);
    EXPECT_EQ(ReadFolderEntries(folder.at("file"), 0).status, dirNFErr);
    if (geteuid() != 0) {
        folder.mkdir("locked");
        chmod(folder.at("locked").constData(), 0);
        EXPECT_EQ(ReadFolderEntries(folder.at("locked"), 0).status, afpAccessDenied);
    }
    // "mach" and "mach.sym" hide only at the top of a volume.
    EXPECT_EQ(ReadFolderEntries(folder.path(), 0).entries.size(), 3u);
    EXPECT_TRUE(IsVolumeRoot("/"));
    const QStringList root = Texts(ReadFolderEntries("/", 0));
    EXPECT_FALSE(root.contains(QStringLiteral("mach")));
    EXPECT_TRUE(root.contains(QStringLiteral("usr")));
}

TEST(FolderEntries, LinksPackagesAndTheDeepestMenu) {
    Folder folder;
    folder.mkdir("Real");
    folder.mkdir("App.AppDir");
    folder.touch("App.AppDir/AppRun");
    chmod(folder.at("App.AppDir/AppRun").constData(), 0755);
    folder.mkdir("NotApp");
    folder.touch("NotApp/AppRun"); // not executable: an ordinary folder
    ASSERT_EQ(symlink(folder.at("Real").constData(), folder.at("ToReal").constData()), 0);
    ASSERT_EQ(symlink("ToReal", folder.at("ToToReal").constData()), 0); // a chain
    ASSERT_EQ(symlink(folder.at("App.AppDir").constData(), folder.at("ToApp").constData()), 0);
    ASSERT_EQ(symlink("nowhere", folder.at("Broken").constData()), 0);
    ASSERT_EQ(symlink("LoopB", folder.at("LoopA").constData()), 0);
    ASSERT_EQ(symlink("LoopA", folder.at("LoopB").constData()), 0);

    const FolderListing top = ReadFolderEntries(folder.path(), 0);
    for (const char *name : {"Real", "NotApp", "ToReal", "ToToReal"})
        EXPECT_TRUE(Find(top, QString::fromLatin1(name))->submenu) << name;
    EXPECT_EQ(Find(top, QStringLiteral("App.AppDir"))->kind, FolderEntry::Kind::Package);
    EXPECT_EQ(Find(top, QStringLiteral("ToToReal"))->path,
              QFileInfo(QFile::decodeName(folder.at("Real"))).canonicalFilePath().toUtf8());
    for (const char *plain : {"App.AppDir", "ToApp", "Broken", "LoopA", "LoopB"})
        EXPECT_FALSE(Find(top, QString::fromLatin1(plain))->submenu) << plain;
    EXPECT_EQ(Find(top, QStringLiteral("Broken"))->path, folder.at("Broken")); // the link itself

    // The deepest menu: no submenus, and links are not followed at all.
    const FolderListing deepest = ReadFolderEntries(folder.path(), kDeepestMenu);
    EXPECT_FALSE(Find(deepest, QStringLiteral("Real"))->submenu);
    EXPECT_EQ(Find(deepest, QStringLiteral("ToReal"))->path, folder.at("ToReal"));
}

TEST(FolderEntries, OddNamesKeepTheirBytesAndTrustedLaunchersShowTheirNames) {
    Installed<platform::FakeTrustMarks, platform::TrustMarks> trustMarks;
    Folder folder;
    const QByteArray invalid("bad\xff\xfename");
    const QByteArray longest = QByteArray(251, 'n') + ".txt";
    for (const QByteArray &name : {QByteArray("new\nline"), invalid, longest})
        folder.touch(name);
    folder.touch("editor.desktop", "[Desktop Entry]\nType=Application\nName=Text Editor\n"
                                   "Icon=accessories-text-editor\nExec=ed\n");
    const FolderListing listing = ReadFolderEntries(folder.path(), 0);
    EXPECT_EQ(Find(listing, QStringLiteral("new\nline"))->path, folder.at("new\nline"));
    EXPECT_EQ(Find(listing, QFile::decodeName(invalid))->path, folder.at(invalid));
    EXPECT_EQ(Find(listing, QFile::decodeName(longest))->path, folder.at(longest));
    // Not yet allowed to run: the launcher shows as the file it is.
    EXPECT_EQ(Find(listing, QStringLiteral("editor.desktop"))->kind, FolderEntry::Kind::File);

    ASSERT_EQ(::chmod(folder.at("editor.desktop").constData(), 0755), 0);
    trustMarks.marked.insert(
        QFileInfo(QFile::decodeName(folder.at("editor.desktop"))).canonicalFilePath().toUtf8());
    const FolderListing trusted = ReadFolderEntries(folder.path(), 0);
    const FolderEntry *editor = Find(trusted, QStringLiteral("Text Editor"));
    EXPECT_EQ(editor->kind, FolderEntry::Kind::DesktopEntry);
    EXPECT_EQ(editor->iconName, QStringLiteral("accessories-text-editor"));
}

// In the folders a launcher reads, the menu leaves out what the launcher does;
// elsewhere the folder is the user's choice and shows everything.
TEST(FolderEntries, ApplicationFoldersShowWhatALauncherShows) {
    TempEnvironment environment;
    const QByteArray desktops = qgetenv("XDG_CURRENT_DESKTOP");
    qputenv("XDG_CURRENT_DESKTOP", "XFCE:GNOME");
    const QByteArray applications = qgetenv("XDG_DATA_HOME") + "/applications";
    const QByteArray mine = environment.root() + "/mine";
    const struct {
        const char *name;
        const char *keys;
        bool listed;
    } cases[] = {
        {"Shown", "Type=Application\n", true},
        {"Web Page", "Type=Link\nURL=https://example.org\n", true},
        {"No Display", "Type=Application\nNoDisplay=true\n", false},
        {"Only KDE", "Type=Application\nOnlyShowIn=KDE;\n", false}, // the rest: DesktopEntryTest
        {"Directory", "Type=Directory\n", false},
    };
    QStringList expected{QStringLiteral("Screensavers")}; // folders always show
    for (const auto &c : cases) {
        if (c.listed)
            expected.append(QString::fromLatin1(c.name));
        const QByteArray entry = "[Desktop Entry]\nName=" + QByteArray(c.name) + '\n' + c.keys;
        for (const QByteArray &folder : {applications, mine})
            WriteFile(folder + '/' + QByteArray(c.name).replace(' ', '-') + ".desktop", entry);
    }
    for (const QByteArray &folder : {applications, mine}) {
        WriteFile(folder + "/mimeinfo.cache", "[MIME Cache]\n");
        WriteFile(folder + "/Screensavers/.keep", "");
    }
    expected.sort(Qt::CaseInsensitive);
    EXPECT_EQ(Texts(ReadFolderEntries(applications, 1)), expected);
    EXPECT_EQ(Texts(ReadFolderEntries(mine, 1)).size(), qsizetype(std::size(cases)) + 2);
    qputenv("XDG_CURRENT_DESKTOP", desktops);
}

// The home folder, the user's own folders, the file system's root and drives
// carry the desktop's icons for them.
TEST(FolderEntries, SpecialFoldersCarryTheirOwnIcons) {
    TempEnvironment environment;
    const QByteArray home = environment.home();
    for (const char *folder : {"/Music", "/Pictures", "/Plain"})
        QDir().mkpath(QFile::decodeName(home + folder));
    WriteFile(environment.configHome() + "/user-dirs.dirs",
              "# written by xdg-user-dirs-update\nXDG_MUSIC_DIR=\"$HOME/Music\"\n"
              "XDG_PICTURES_DIR=\"" +
                  home + "/Pictures\"\nXDG_DESKTOP_DIR=\"$HOME/\"\n");
    const struct {
        const char *link;
        QByteArray target;
        const char *icon;
    } cases[] = {
        {"Home", home, "user-home"},
        {"Music", home + "/Music", "folder-music"},
        {"Pictures", home + "/Pictures", "folder-pictures"},
        {"Plain", home + "/Plain", ""},
        {"Root", "/", "drive-harddisk"},
    };
    Folder folder;
    for (const auto &c : cases)
        ASSERT_EQ(symlink(c.target.constData(), folder.at(c.link).constData()), 0);
    const FolderListing listing = ReadFolderEntries(folder.path(), 0);
    for (const auto &c : cases)
        EXPECT_EQ(Find(listing, QString::fromLatin1(c.link))->iconName, QLatin1String(c.icon));
    // Inside the home folder itself too, where the folders go by their own names.
    EXPECT_EQ(Find(ReadFolderEntries(home, 0), QStringLiteral("Music"))->iconName,
              QStringLiteral("folder-music"));
}

} // namespace
