#include "finder/alias.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <unistd.h>

namespace {

QByteArray LinkTarget(const QByteArray &path) {
    char buffer[4096];
    const ssize_t length = ::readlink(path.constData(), buffer, sizeof buffer);
    return length < 0 ? QByteArray() : QByteArray(buffer, length);
}

class AliasTest : public ::testing::Test {
protected:
    QByteArray root() const { return QFile::encodeName(dir.path()); }
    FSSpec folder() const { return {root()}; }

    QTemporaryDir dir;
};

TEST_F(AliasTest, TakenNamesCountUpBeforeTheExtension) {
    const FSSpec report{"/srv/docs/report.pdf"};
    const FSSpec folderSpec = folder();
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(CreateAlias(&report, &folderSpec), noErr);
    EXPECT_EQ(LinkTarget(root() + "/report.pdf"), "/srv/docs/report.pdf");
    EXPECT_EQ(LinkTarget(root() + "/report (2).pdf"), "/srv/docs/report.pdf");
    EXPECT_EQ(LinkTarget(root() + "/report (3).pdf"), "/srv/docs/report.pdf");

    // A leading dot starts no extension, and neither does a trailing one.
    EXPECT_EQ(AliasName("/home/u/.bashrc", 2), ".bashrc (2)");
    EXPECT_EQ(AliasName("/srv/archive.tar.gz", 2), "archive.tar (2).gz");
    EXPECT_EQ(AliasName("/srv/odd.", 3), "odd. (3)");
    EXPECT_EQ(AliasName("/", 1), "File System");
}

TEST_F(AliasTest, OddNamesSurviveByteForByte) {
    const FSSpec folderSpec = folder();
    for (const QByteArray &name : {QByteArray("two words"), QByteArray("line\nbreak"),
                                   QByteArray("bad\xff\xfe utf8"), QByteArray(255, 'n')}) {
        const FSSpec item{"/srv/" + name};
        ASSERT_EQ(CreateAlias(&item, &folderSpec), noErr) << name.constData();
        EXPECT_EQ(LinkTarget(root() + '/' + name), item.path);
    }
}

TEST_F(AliasTest, A255ByteNameIsShortenedWithoutSplittingACharacter) {
    // 84 three-byte characters and ".txt": 256 bytes would not fit with " (2)".
    QByteArray stem;
    for (int i = 0; i < 83; ++i)
        stem += "\xe2\x82\xac"; // the euro sign
    const QByteArray name = stem + "ab.txt";
    ASSERT_LE(name.size(), 255);
    const QByteArray second = AliasName("/srv/" + name, 2);
    EXPECT_LE(second.size(), 255);
    EXPECT_TRUE(second.endsWith(" (2).txt"));
    EXPECT_EQ(QString::fromUtf8(second).toUtf8(), second) << "still valid UTF-8";

    const FSSpec item{"/srv/" + name};
    const FSSpec folderSpec = folder();
    ASSERT_EQ(CreateAlias(&item, &folderSpec), noErr);
    ASSERT_EQ(CreateAlias(&item, &folderSpec), noErr);
    EXPECT_EQ(LinkTarget(root() + '/' + second), item.path);
}

TEST_F(AliasTest, FailuresComeBackAsStatusesAndLeaveNothing) {
    const FSSpec item{"/srv/file"};
    const FSSpec missing{root() + "/no-such-folder"};
    EXPECT_EQ(CreateAlias(&item, &missing), fnfErr);

    QFile plain(dir.filePath(QStringLiteral("plain")));
    ASSERT_TRUE(plain.open(QIODevice::WriteOnly));
    plain.close();
    const FSSpec notAFolder{root() + "/plain"};
    EXPECT_EQ(CreateAlias(&item, &notAFolder), dirNFErr);

    const FSSpec none{};
    const FSSpec folderSpec = folder();
    EXPECT_EQ(CreateAlias(&none, &folderSpec), paramErr);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
              QStringList{QStringLiteral("plain")});
}

} // namespace
