// Dragging files from another program onto the real program's title on a
// private desktop: a real XDND drag made with the mouse from a small Qt
// program; the title highlights, and the files become links in the menu
// folder, in order, odd names and all.
#include "tests/e2e/titles_desktop.h"

#include <QDir>

#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <unistd.h>

namespace {

class TitleDropDesktopTest : public ProgramOnDesktop {
protected:
    // Names that are not valid text are beyond QTemporaryDir: the program
    // stops, then everything goes by its bytes.
    void TearDown() override {
        if (program != nullptr)
            DesktopSession::stop(program);
        ::nftw(
            env.root().constData(),
            [](const char *entry, const struct stat *, int, FTW *) { return ::remove(entry); }, 16,
            FTW_DEPTH | FTW_PHYS);
    }

    QByteArray menuFolder() const { return env.configHome() + "/Kestrel Menu Items"; }
    int MenuEntries() const {
        int count = 0;
        if (DIR *dir = ::opendir(menuFolder().constData())) {
            while (const dirent *entry = ::readdir(dir))
                count += entry->d_name[0] != '.';
            ::closedir(dir);
        }
        return count;
    }
    QByteArray LinkTarget(const QByteArray &name) const {
        char target[PATH_MAX];
        const ssize_t length =
            ::readlink((menuFolder() + '/' + name).constData(), target, sizeof target);
        return length < 0 ? QByteArray() : QByteArray(target, length);
    }
};

TEST_F(TitleDropDesktopTest, ThreeDroppedFilesBecomeThreeLinksInOrder) {
    startProgram();
    ASSERT_TRUE(WaitFor([&] { return MenuEntries() == 3; })) << "the first run's three links";
    // One odd name in three folders: the links' numbering gives their order.
    const QByteArray name = "odd #1 50%\n\xff.txt";
    QStringList uris;
    QList<QByteArray> paths;
    for (const char *folder : {"one", "two", "three"}) {
        const QByteArray dir = env.root() + "/dragged/" + folder;
        ASSERT_TRUE(QDir().mkpath(QFile::decodeName(dir)));
        ::close(::open((dir + '/' + name).constData(), O_WRONLY | O_CREAT, 0644));
        paths.append(dir + '/' + name);
        uris.append(QString::fromLatin1("file://" + paths.last().toPercentEncoding("/")));
    }
    const QImage plain = settledTitle();

    QProcess *source = session.start(QStringLiteral(KESTREL_DROP_SOURCE), uris, environment());
    ASSERT_TRUE(WaitFor([&] { return source->canReadLine(); }));
    const QString window = QString::fromLatin1(source->readLine().trimmed());
    ASSERT_TRUE(WaitFor([&] { return info(window.toLatin1()).viewable; }));
    // Pressed on the source and moved in steps to the title, as a hand would.
    xdo(QStringLiteral("mousemove --sync --window %1 100 60 mousedown 1").arg(window));
    for (int step = 1; step <= 20; ++step)
        xdo(QStringLiteral("mousemove --sync %1 %2")
                .arg(500 - 480 * step / 20)
                .arg(360 - 350 * step / 20));
    EXPECT_TRUE(WaitFor([&] {
        xdo(QStringLiteral("mousemove --sync 21 10 mousemove --sync 20 10"));
        return screen(QRect(0, 0, 45, 22)) != plain;
    })) << "the title should highlight; log: "
        << log().constData();
    EXPECT_TRUE(WaitFor([&] {
        return log().contains("drag entered title at 0,0: 3 items, acceptable");
    })) << log().constData();
    xdo(QStringLiteral("mouseup 1"));
    ASSERT_TRUE(WaitFor([&] { return source->canReadLine(); }));
    EXPECT_EQ(source->readLine().trimmed(), "dropped link") << log().constData();

    ASSERT_TRUE(WaitFor([&] { return MenuEntries() == 6; })) << log().constData();
    EXPECT_EQ(LinkTarget(name), paths[0]);
    EXPECT_EQ(LinkTarget("odd #1 50%\n\xff (2).txt"), paths[1]);
    EXPECT_EQ(LinkTarget("odd #1 50%\n\xff (3).txt"), paths[2]);
    EXPECT_TRUE(WaitFor([&] { return screen(QRect(0, 0, 45, 22)) == plain; }))
        << "the highlight goes after the drop";
    for (const QByteArray &path : paths)
        EXPECT_EQ(::access(path.constData(), F_OK), 0) << "the dragged files stay where they were";
}

} // namespace
