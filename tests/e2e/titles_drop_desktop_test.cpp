// Dragging onto the real program's title on a private desktop (Xvfb, openbox):
// files from another program become links in the menu folder, in order, and a
// drag of text is refused without a highlight. The drag is a real one, made
// with the mouse from a small Qt program.
#include "tests/support/desktopsession.h"
#include "tests/support/tempenvironment.h"

#include <QDir>
#include <QImage>
#include <QStandardPaths>
#include <gtest/gtest.h>

#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <unistd.h>

namespace {

// Makes an empty file by its raw bytes: the name need not be valid text.
void TouchRaw(const QByteArray &folder, const QByteArray &name) {
    ASSERT_TRUE(QDir().mkpath(QFile::decodeName(folder)));
    const int fd = ::open((folder + '/' + name).constData(), O_WRONLY | O_CREAT, 0644);
    ASSERT_GE(fd, 0) << folder.constData();
    ::close(fd);
}

class TitleDropDesktopTest : public ::testing::Test {
protected:
    // The desktop offers a file manager on its bus, so the program finds one at start.
    static DesktopSession::Options WithFileManager() {
        DesktopSession::Options options;
        options.activatableNames = {QStringLiteral("org.freedesktop.FileManager1")};
        return options;
    }

    void SetUp() override {
        if (!session.failure().isEmpty())
            GTEST_SKIP() << session.failure().toStdString();
        if (QStandardPaths::findExecutable(QStringLiteral("import")).isEmpty())
            GTEST_SKIP() << "ImageMagick's import is not installed";
        environment = session.environment(env.processEnvironment());
        environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("kestrel.*=true"));

        program = session.start(QStringLiteral(KESTREL_PROGRAM), {}, environment);
        ASSERT_TRUE(WaitFor(
            [&] {
                const QByteArray title =
                    xdotool({QStringLiteral("search"), QStringLiteral("--name"),
                             QStringLiteral("^Kestrel Menu title$")})
                        .trimmed();
                return !title.isEmpty() && log().contains("running");
            },
            15000))
            << log().constData();
        // The first run's three links are in place.
        ASSERT_TRUE(WaitFor([&] { return MenuEntries().size() == 3; }));
        before = MenuEntries();
    }

    // Names that are not valid text are beyond QTemporaryDir: the program stops,
    // then everything goes by its bytes.
    void TearDown() override {
        if (program != nullptr)
            DesktopSession::stop(program);
        ::nftw(
            env.root().constData(),
            [](const char *entry, const struct stat *, int, FTW *) { return ::remove(entry); }, 16,
            FTW_DEPTH | FTW_PHYS);
    }

    QByteArray xdotool(const QStringList &arguments) const {
        return session.run(QStringLiteral("xdotool"), arguments);
    }

    const QByteArray &log() {
        log_ += program->readAllStandardError();
        return log_;
    }

    QByteArray menuFolder() const { return env.configHome() + "/Kestrel Menu Items"; }

    QList<QByteArray> MenuEntries() const {
        QList<QByteArray> names;
        if (DIR *dir = ::opendir(menuFolder().constData())) {
            while (const dirent *entry = ::readdir(dir)) {
                const QByteArray name(entry->d_name);
                if (name != "." && name != "..")
                    names.append(name);
            }
            ::closedir(dir);
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    QByteArray LinkTarget(const QByteArray &name) const {
        char target[PATH_MAX];
        const ssize_t length =
            ::readlink((menuFolder() + '/' + name).constData(), target, sizeof target);
        return length < 0 ? QByteArray() : QByteArray(target, length);
    }

    // The title's place on the screen as the X server shows it.
    QImage TitlePicture() const {
        return QImage::fromData(session.run(QStringLiteral("import"),
                                            {QStringLiteral("-window"), QStringLiteral("root"),
                                             QStringLiteral("-crop"), QStringLiteral("45x22+0+0"),
                                             QStringLiteral("png:-")}))
            .convertToFormat(QImage::Format_RGB32);
    }

    // Starts the drag source with `arguments` and returns it once its window shows.
    QProcess *StartSource(const QStringList &arguments) {
        QProcess *source =
            session.start(QStringLiteral(KESTREL_DROP_SOURCE), arguments, environment);
        EXPECT_TRUE(WaitFor([&] { return source->canReadLine(); }));
        sourceWindow = QString::fromLatin1(source->readLine().trimmed());
        EXPECT_TRUE(WaitFor([&] {
            return session.run(QStringLiteral("xwininfo"), {QStringLiteral("-id"), sourceWindow})
                .contains("IsViewable");
        }));
        return source;
    }

    // Presses the mouse on the source's window and moves in steps to the title,
    // where the button stays down; as a hand would.
    void DragToTheTitle() {
        xdotool({QStringLiteral("mousemove"), QStringLiteral("--sync"), QStringLiteral("--window"),
                 sourceWindow, QStringLiteral("100"), QStringLiteral("60")});
        WaitFor([] { return false; }, 200);
        xdotool({QStringLiteral("mousedown"), QStringLiteral("1")});
        const QStringList location =
            QString::fromLatin1(xdotool({QStringLiteral("getmouselocation")}))
                .split(u' ', Qt::SkipEmptyParts);
        const int startX = location.value(0).section(u':', 1).toInt();
        const int startY = location.value(1).section(u':', 1).toInt();
        constexpr int kSteps = 20;
        for (int step = 1; step <= kSteps; ++step) {
            const int x = startX + (20 - startX) * step / kSteps;
            const int y = startY + (10 - startY) * step / kSteps;
            xdotool({QStringLiteral("mousemove"), QString::number(x), QString::number(y)});
            WaitFor([] { return false; }, 40);
        }
        // A few small moves over the title, then time for the answers to arrive.
        for (int x : {21, 22, 20}) {
            xdotool({QStringLiteral("mousemove"), QString::number(x), QStringLiteral("10")});
            WaitFor([] { return false; }, 60);
        }
        WaitFor([] { return false; }, 400);
    }

    void Release() { xdotool({QStringLiteral("mouseup"), QStringLiteral("1")}); }

    static QByteArray ReadResult(QProcess *source) {
        if (!WaitFor([&] { return source->canReadLine(); }, 10000))
            return "no result";
        return source->readLine().trimmed();
    }

    TempEnvironment env;
    DesktopSession session{WithFileManager()};
    QProcessEnvironment environment;
    QProcess *program = nullptr;
    QString sourceWindow;
    QList<QByteArray> before;
    QByteArray log_;
};

TEST_F(TitleDropDesktopTest, ThreeDroppedFilesBecomeThreeLinksInOrder) {
    // One odd name in three folders: the links' numbering gives their order.
    const QByteArray name = "odd #1 50%\n\xff.txt";
    QStringList uris;
    QList<QByteArray> paths;
    for (const char *folder : {"one", "two", "three"}) {
        const QByteArray path = env.root() + "/dragged/" + folder + '/' + name;
        TouchRaw(env.root() + "/dragged/" + folder, name);
        paths.append(path);
        uris.append(QString::fromLatin1("file://" + path.toPercentEncoding("/")));
    }
    const QImage plain = TitlePicture();
    ASSERT_FALSE(plain.isNull());

    QProcess *source = StartSource(QStringList{QStringLiteral("files")} + uris);
    DragToTheTitle();
    EXPECT_TRUE(WaitFor([&] { return TitlePicture() != plain; }, 3000))
        << "the title should highlight; log: " << log().constData();
    EXPECT_TRUE(log().contains("drag entered title at 0,0: 3 items, acceptable"))
        << log().constData();
    Release();
    EXPECT_EQ(ReadResult(source), "dropped link") << log().constData();

    ASSERT_TRUE(WaitFor([&] { return MenuEntries().size() == 6; })) << log().constData();
    EXPECT_EQ(LinkTarget(name), paths[0]);
    EXPECT_EQ(LinkTarget("odd #1 50%\n\xff (2).txt"), paths[1]);
    EXPECT_EQ(LinkTarget("odd #1 50%\n\xff (3).txt"), paths[2]);
    EXPECT_TRUE(WaitFor([&] { return TitlePicture() == plain; }, 3000))
        << "the highlight should go after the drop";
    for (const QByteArray &path : paths)
        EXPECT_EQ(::access(path.constData(), F_OK), 0) << "the dragged files stay where they were";
}

TEST_F(TitleDropDesktopTest, ADragOfTextIsRefusedAndShowsNoHighlight) {
    const QImage plain = TitlePicture();
    ASSERT_FALSE(plain.isNull());
    QProcess *source = StartSource({QStringLiteral("text"), QStringLiteral("a few words")});
    DragToTheTitle();
    ASSERT_TRUE(WaitFor([&] { return log().contains("drag entered title at 0,0"); }, 3000))
        << "the drag never reached the title; log: " << log().constData();
    EXPECT_TRUE(log().contains("drag entered title at 0,0: 1 items, refused")) << log().constData();
    EXPECT_EQ(TitlePicture(), plain);
    Release();
    EXPECT_EQ(ReadResult(source), "dropped none");
    WaitFor([] { return false; }, 300);
    EXPECT_EQ(MenuEntries(), before);
    EXPECT_EQ(TitlePicture(), plain);
}

} // namespace
