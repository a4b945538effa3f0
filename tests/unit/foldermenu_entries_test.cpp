// Reading a folder for its menu: what shows, in which order and under which text.
#include "foldermenu_testfolder.h"
#include "foldermenus/folderentries.h"

#include <QRandomGenerator>
#include <QStringList>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QStringList Texts(const FolderListing &listing) {
    QStringList texts;
    for (const FolderEntry &entry : listing.entries)
        texts.append(entry.text);
    return texts;
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
        qsizetype count = items.size();
        qsizetype position; // 1-based
        if (count == 0 || !before(name, items[count - 1]))
            position = count + 1;
        else if (count <= 1)
            position = count;
        else {
            qsizetype lo = 1, hi = count;
            do {
                const qsizetype mid = (lo + hi) / 2;
                if (before(name, items[mid - 1]))
                    hi = mid;
                else
                    lo = mid + 1;
            } while (hi > lo);
            position = hi;
        }
        items.insert(position - 1, name);
    }
    return items;
}

TEST(FolderEntries, OrderIsCaseInsensitiveStableAndNotNumeric) {
    Folder folder;
    for (const char *name : {"b", "A", "a", "C", "File10", "File9", "\xc3\xa9t\xc3\xa9", "ete"})
        folder.touch(name);
    const QStringList texts = Texts(ReadFolderEntries(folder.path(), 0));
    // 'A' and 'a' compare equal: they keep the order the folder returned them in.
    const QList<QByteArray> order = folder.enumerationOrder();
    const bool upperFirst = order.indexOf("A") < order.indexOf("a");
    QStringList expected{upperFirst ? QStringLiteral("A") : QStringLiteral("a"),
                         upperFirst ? QStringLiteral("a") : QStringLiteral("A"),
                         QStringLiteral("b"), QStringLiteral("C")};
    expected << QStringLiteral("ete") << QStringLiteral("été") << QStringLiteral("File10")
             << QStringLiteral("File9");
    EXPECT_EQ(texts, expected);
}

TEST(FolderEntries, OrderMatchesInsertionOneByOne) {
    // Names that tie under case and accents, prefixes, digits and punctuation:
    // the menu's order must be exactly that of inserting them one at a time.
    Folder folder;
    const QList<QByteArray> parts{"a", "A",  "b",        "\xc3\xa9", "e\xcc\x81", "E",
                                  "1", "10", "9",        ">>",       "-",         " ",
                                  "_", "z",  "\xc3\x84", "\xc3\x9f", "ss"};
    QRandomGenerator random(4);
    QSet<QByteArray> made;
    while (made.size() < 400) {
        QByteArray name;
        const int length = 1 + random.bounded(4);
        for (int i = 0; i < length; ++i)
            name += parts[random.bounded(int(parts.size()))];
        if (!made.contains(name)) {
            made.insert(name);
            folder.touch(name);
        }
    }
    const FolderListing listing = ReadFolderEntries(folder.path(), 0);
    QStringList names;
    for (const FolderEntry &entry : listing.entries)
        names.append(entry.name);
    EXPECT_EQ(names, InsertOneByOne(folder.enumerationOrder()));
}

TEST(FolderEntries, SortPrefixesAndSeparators) {
    Folder folder;
    for (const char *name : {"01>>Zeta", "Alpha", "x>>-", "-", ">>", "b>>c>>d"})
        folder.touch(name);
    const FolderListing listing = ReadFolderEntries(folder.path(), 0);
    // Ordered by the full name, shown without the prefix.
    EXPECT_EQ(Texts(listing),
              (QStringList{QStringLiteral("-"), QStringLiteral("Zeta"), QString(),
                           QStringLiteral("Alpha"), QStringLiteral("c>>d"), QStringLiteral("-")}));
    QList<bool> separators;
    for (const FolderEntry &entry : listing.entries)
        separators.append(entry.separator);
    // A bare "-" is an ordinary item; only "-" after a prefix is a separator.
    EXPECT_EQ(separators, (QList<bool>{false, false, false, false, false, true}));
}

TEST(FolderEntries, HiddenFileIsExact) {
    Folder folder;
    for (const char *name : {"Foo", "foo", "Foo ", "Bar", "Baz", "Last", "Keep"})
        folder.touch(name);
    // CR, LF and CR LF all end lines; no trimming; the unterminated last line is ignored.
    folder.touch(".hidden", "Foo\rBar\r\nBaz\n\nLast");
    EXPECT_EQ(Texts(ReadFolderEntries(folder.path(), 0)),
              (QStringList{QStringLiteral("foo"), QStringLiteral("Foo "), QStringLiteral("Keep"),
                           QStringLiteral("Last")}));
}

TEST(FolderEntries, HiddenLinesKeepAByteLength) {
    EXPECT_EQ(HiddenNamesFromFile("a\nb"), (std::vector<QByteArray>{"a"}));
    EXPECT_TRUE(HiddenNamesFromFile("\r\n\n").empty());
    const QByteArray longest(255, 'x');
    EXPECT_EQ(HiddenNamesFromFile(longest + '\n'), (std::vector<QByteArray>{longest}));
    // 256 bytes wrap the length to 0 and the line starts over from the front.
    EXPECT_TRUE(HiddenNamesFromFile(QByteArray(256, 'x') + '\n').empty());
    EXPECT_EQ(HiddenNamesFromFile(QByteArray(256, 'x') + "Foo\n"),
              (std::vector<QByteArray>{"Foo"}));
}

TEST(FolderEntries, DotNamesAndEmptyAndUnreadableFolders) {
    Folder folder;
    folder.touch(".profile");
    folder.touch(".hidden", "Gone\n");
    folder.touch("Gone");
    const FolderListing hidden = ReadFolderEntries(folder.path(), 0);
    EXPECT_TRUE(hidden.entries.empty());
    EXPECT_EQ(hidden.found, 3u); // hidden entries count as found
    EXPECT_EQ(hidden.status, noErr);

    EXPECT_EQ(ReadFolderEntries(folder.at("missing"), 0).status, fnfErr);
    EXPECT_EQ(ReadFolderEntries(folder.at("Gone"), 0).status, dirNFErr);
    if (geteuid() != 0) {
        folder.mkdir("locked");
        chmod(folder.at("locked").constData(), 0);
        EXPECT_EQ(ReadFolderEntries(folder.at("locked"), 0).status, afpAccessDenied);
    }
}

TEST(FolderEntries, MachFilesHideOnlyAtAVolumeRoot) {
    Folder folder;
    folder.touch("mach");
    folder.touch("mach.sym");
    EXPECT_FALSE(IsVolumeRoot(folder.path()));
    EXPECT_EQ(ReadFolderEntries(folder.path(), 0).entries.size(), 2u);

    EXPECT_TRUE(IsVolumeRoot("/"));
    // /dev/shm is a file system of its own on most systems: try the names there.
    const QByteArray root = "/dev/shm";
    if (!IsVolumeRoot(root) || access(root.constData(), W_OK) != 0 ||
        access("/dev/shm/mach", F_OK) == 0 || access("/dev/shm/mach.sym", F_OK) == 0)
        GTEST_SKIP() << "no writable volume root to try";
    for (const char *name : {"/dev/shm/mach", "/dev/shm/mach.sym", "/dev/shm/mach.other"})
        close(open(name, O_WRONLY | O_CREAT, 0644));
    const FolderListing listing = ReadFolderEntries(root, 0);
    for (const char *name : {"/dev/shm/mach", "/dev/shm/mach.sym", "/dev/shm/mach.other"})
        unlink(name);
    QStringList texts = Texts(listing);
    EXPECT_FALSE(texts.contains(QStringLiteral("mach")));
    EXPECT_FALSE(texts.contains(QStringLiteral("mach.sym")));
    EXPECT_TRUE(texts.contains(QStringLiteral("mach.other")));
}

TEST(FolderEntries, LinksPackagesAndDepth) {
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
    ASSERT_EQ(symlink(folder.at("nowhere").constData(), folder.at("Broken").constData()), 0);
    ASSERT_EQ(symlink("LoopB", folder.at("LoopA").constData()), 0);
    ASSERT_EQ(symlink("LoopA", folder.at("LoopB").constData()), 0);

    const auto find = [](const FolderListing &listing, const QString &text) {
        for (const FolderEntry &entry : listing.entries) {
            if (entry.text == text)
                return entry;
        }
        ADD_FAILURE() << qPrintable(text);
        return FolderEntry{};
    };
    const QByteArray real =
        QFile::encodeName(QFileInfo(QFile::decodeName(folder.at("Real"))).canonicalFilePath());
    const FolderListing top = ReadFolderEntries(folder.path(), 0);
    EXPECT_TRUE(find(top, QStringLiteral("Real")).submenu);
    EXPECT_TRUE(find(top, QStringLiteral("NotApp")).submenu);
    EXPECT_FALSE(find(top, QStringLiteral("App.AppDir")).submenu);
    EXPECT_EQ(find(top, QStringLiteral("App.AppDir")).kind, FolderEntry::Kind::Package);
    EXPECT_TRUE(find(top, QStringLiteral("ToReal")).submenu);
    EXPECT_EQ(find(top, QStringLiteral("ToReal")).path, real); // the target is stored
    EXPECT_EQ(find(top, QStringLiteral("ToToReal")).path, real);
    EXPECT_FALSE(find(top, QStringLiteral("ToApp")).submenu);
    for (const char *plain : {"Broken", "LoopA", "LoopB"}) {
        const FolderEntry entry = find(top, QString::fromLatin1(plain));
        EXPECT_FALSE(entry.submenu) << plain;
        EXPECT_EQ(entry.path, folder.at(plain)) << plain; // the link itself
    }

    // The deepest menu: no submenus, and links are not followed at all.
    const FolderListing deepest = ReadFolderEntries(folder.path(), kDeepestMenu);
    EXPECT_FALSE(find(deepest, QStringLiteral("Real")).submenu);
    EXPECT_FALSE(find(deepest, QStringLiteral("ToReal")).submenu);
    EXPECT_EQ(find(deepest, QStringLiteral("ToReal")).path, folder.at("ToReal"));
    EXPECT_TRUE(
        find(ReadFolderEntries(folder.path(), kDeepestMenu - 1), QStringLiteral("ToReal")).submenu);
}

TEST(FolderEntries, OddNamesAndDesktopEntries) {
    Folder folder;
    const QByteArray invalid("bad\xff\xfename");
    const QByteArray longest = QByteArray(251, 'n') + ".txt";
    for (const QByteArray &name : {QByteArray("with space"), QByteArray("new\nline"), invalid,
                                   longest, QByteArray(">>lead")})
        folder.touch(name);
    folder.touch("editor.desktop", "[Desktop Entry]\nType=Application\nName=Text Editor\n"
                                   "Name[xx]=Other\nIcon=accessories-text-editor\nExec=ed\n");
    folder.touch("dir.desktop", "[Desktop Entry]\nType=Directory\nName=Not Shown\n");
    const FolderListing listing = ReadFolderEntries(folder.path(), 0);
    QHash<QString, QByteArray> pathByText;
    for (const FolderEntry &entry : listing.entries)
        pathByText.insert(entry.text, entry.path);
    EXPECT_EQ(pathByText.value(QStringLiteral("with space")), folder.at("with space"));
    EXPECT_EQ(pathByText.value(QStringLiteral("new\nline")), folder.at("new\nline"));
    EXPECT_EQ(pathByText.value(QFile::decodeName(invalid)), folder.at(invalid)); // bytes kept
    EXPECT_EQ(pathByText.value(QFile::decodeName(longest)), folder.at(longest));
    EXPECT_EQ(pathByText.value(QStringLiteral("lead")), folder.at(">>lead"));
    // Neither installed nor allowed to run: shown as the file it is.
    EXPECT_EQ(pathByText.value(QStringLiteral("editor.desktop")), folder.at("editor.desktop"));
    EXPECT_EQ(pathByText.value(QStringLiteral("dir.desktop")), folder.at("dir.desktop"));
    EXPECT_EQ(listing.entries.size(), 7u);
}

} // namespace
