// Making links in a menu folder and following them, on real files.
#include "finder/alias.h"
#include "tests/support/tempenvironment.h"

#include <gtest/gtest.h>

#include <QFileInfo>

#include <unistd.h>

namespace {

class AliasTest : public ::testing::Test {
protected:
    TempEnvironment environment;
    QByteArray root =
        QFile::encodeName(QFileInfo(QFile::decodeName(environment.root())).canonicalFilePath());
    FSSpec folder{root};
};

TEST_F(AliasTest, TakenAndOddNamesCountUpBeforeTheExtension) {
    QByteArray euros; // 83 three-byte characters: " (2)" would pass 255 bytes
    for (int i = 0; i < 83; ++i)
        euros += "\xe2\x82\xac";
    for (const QByteArray &name : {QByteArray("report.pdf"), QByteArray("line\nbreak"),
                                   QByteArray("bad\xff utf8"), euros + "ab.txt"}) {
        const FSSpec item{"/srv/" + name};
        ASSERT_EQ(CreateAlias(&item, &folder), noErr);
        ASSERT_EQ(CreateAlias(&item, &folder), noErr);
        const QByteArray second = AliasName(item.path, 2);
        EXPECT_EQ(ReadLink(root + '/' + name), item.path);
        EXPECT_EQ(ReadLink(root + '/' + second), item.path) << second.constData();
        EXPECT_LE(second.size(), 255);
        EXPECT_TRUE(name.startsWith("bad") || QString::fromUtf8(second).toUtf8() == second)
            << "cut on a character boundary";
    }
    for (const auto &[path, name] : {std::pair{"/home/u/.bashrc", ".bashrc (2)"},
                                     {"/srv/archive.tar.gz", "archive.tar (2).gz"},
                                     {"/srv/odd.", "odd. (2)"}})
        EXPECT_EQ(AliasName(path, 2), name);
    EXPECT_EQ(AliasName("/", 1), "File System");

    WriteFile(root + "/plain", "");
    const FSSpec item{"/srv/file"}, none{}, missing{root + "/missing"}, plain{root + "/plain"};
    EXPECT_EQ(CreateAlias(&item, &missing), fnfErr);
    EXPECT_EQ(CreateAlias(&item, &plain), dirNFErr);
    EXPECT_EQ(CreateAlias(&none, &folder), paramErr);
}

TEST_F(AliasTest, LinksAreFollowedByTheFileSystem) {
    WriteFile(root + "/sub/Folder/secret.txt", "secret\n");
    WriteFile(root + "/secret.txt", "secret\n");
    struct Case {
        const char *name, *target;
        bool chains;
        OSErr status;
        QByteArray resolved; // the link itself when it cannot be followed
        bool isFolder;
    } const cases[] = {
        {"first", "sub/Folder", true, noErr, "/sub/Folder", true},
        {"second", "./first", true, noErr, "/sub/Folder", true},
        {"second", "./first", false, noErr, "/first", true}, // one step: the next link
        {"third", "sub/../secret.txt", true, noErr, "/secret.txt", false},
        {"lexical", "missing/../secret.txt", true, fnfErr, "/lexical", false},
        {"lexical", "missing/../secret.txt", false, fnfErr, "/lexical", false},
        {"loop-a", "loop-b", true, ioErr, "/loop-a", false},
        {"loop-b", "loop-a", true, ioErr, "/loop-b", false},
        {"sub", nullptr, true, noErr, "/sub", true}, // not a link
        {"absent", nullptr, true, fnfErr, "/absent", false},
    };
    for (const Case &c : cases) {
        if (c.target != nullptr)
            ::symlink(c.target, (root + "/" + c.name).constData());
    }
    for (const Case &c : cases) {
        FSSpec spec{root + "/" + c.name};
        bool isFolder = !c.isFolder, aliased = false;
        EXPECT_EQ(ResolveAliasFile(&spec, c.chains, &isFolder, &aliased), c.status) << c.name;
        EXPECT_EQ(spec.path, root + c.resolved) << c.name;
        EXPECT_EQ(isFolder, c.isFolder) << c.name;
        EXPECT_EQ(aliased, c.status == noErr && c.target != nullptr) << c.name;
    }
}

} // namespace
