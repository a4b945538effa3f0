// The titles of the real program on a private desktop (Xvfb, openbox): where
// the title window stands, that panels do not cover it, that a click leaves
// the focus where it was, and that fullscreen windows and the hover key make
// it step aside.
#include "tests/support/desktopsession.h"
#include "tests/support/tempenvironment.h"

#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

struct WindowInfo {
    QRect geometry;
    bool viewable = false;
    bool overrideRedirect = false;
};

class TitlesDesktopTest : public ::testing::Test {
protected:
    explicit TitlesDesktopTest(DesktopSession::Options options = {})
        : session(WithFileManager(options)) {}

    // The desktop offers a file manager on its bus, as desktops do, so that
    // the program has one to bring forward when it starts. Nothing here asks
    // the bus to start it.
    static DesktopSession::Options WithFileManager(DesktopSession::Options options) {
        options.activatableNames = {QStringLiteral("org.freedesktop.FileManager1")};
        return options;
    }

    void SetUp() override {
        if (!session.failure().isEmpty())
            GTEST_SKIP() << session.failure().toStdString();
    }

    QProcessEnvironment environment() const {
        QProcessEnvironment environment = session.environment(env.processEnvironment());
        environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("kestrel.*=true"));
        return environment;
    }

    // Starts the program and waits for its title to show.
    void startProgram() {
        program = session.start(QStringLiteral(KESTREL_PROGRAM), {}, environment());
        ASSERT_TRUE(WaitFor([&] {
            title = xdotool({QStringLiteral("search"), QStringLiteral("--name"),
                             QStringLiteral("^Kestrel Menu title$")})
                        .trimmed();
            return !title.isEmpty() && info(title).viewable;
        })) << program->readAllStandardError().constData();
    }

    // Starts a test window ("dock" or "normal") and returns its id once it is mapped.
    QByteArray startWindow(const char *kind, QProcess **process = nullptr) {
        QProcess *window = session.start(QStringLiteral(KESTREL_TITLES_WINDOW),
                                         {QString::fromLatin1(kind)}, environment());
        EXPECT_TRUE(WaitFor([&] { return window->canReadLine(); }));
        const QByteArray id = window->readLine().trimmed();
        EXPECT_TRUE(WaitFor([&] { return info(id).viewable; })) << kind;
        if (process != nullptr)
            *process = window;
        return id;
    }

    QByteArray xdotool(const QStringList &arguments) const {
        return session.run(QStringLiteral("xdotool"), arguments);
    }

    WindowInfo info(const QByteArray &id) const {
        const QString text = QString::fromUtf8(session.run(
            QStringLiteral("xwininfo"), {QStringLiteral("-id"), QString::fromLatin1(id)}));
        auto number = [&](const char *label) {
            const QRegularExpression pattern(QLatin1String(label) +
                                             QStringLiteral(":\\s+(-?\\d+)"));
            return pattern.match(text).captured(1).toInt();
        };
        WindowInfo result;
        result.geometry = QRect(number("Absolute upper-left X"), number("Absolute upper-left Y"),
                                number("Width"), number("Height"));
        result.viewable = text.contains(QLatin1String("Map State: IsViewable"));
        result.overrideRedirect = text.contains(QLatin1String("Override Redirect State: yes"));
        return result;
    }

    qulonglong activeWindow() const {
        return xdotool({QStringLiteral("getactivewindow")}).trimmed().toULongLong();
    }

    // The screen as shown, from the X server itself.
    QImage screen() const {
        return QImage::fromData(session.run(QStringLiteral("import"),
                                            {QStringLiteral("-window"), QStringLiteral("root"),
                                             QStringLiteral("png:-")}))
            .convertToFormat(QImage::Format_RGB32);
    }

    // Whether the dock's magenta shows anywhere in the title's place.
    bool dockShowsThrough() const {
        const QImage shot = screen();
        EXPECT_FALSE(shot.isNull());
        for (int y = 0; y < 22; ++y)
            for (int x = 0; x < 45; ++x)
                if (shot.pixel(x, y) == qRgb(255, 0, 255))
                    return true;
        return false;
    }

    static void Send(QProcess *process, const char *command) {
        process->write(QByteArray(command) + '\n');
        process->waitForBytesWritten(1000);
    }

    TempEnvironment env;
    DesktopSession session;
    QProcess *program = nullptr;
    QByteArray title;
};

TEST_F(TitlesDesktopTest, TitleStandsAtTheCornerAbovePanelsOnEveryWorkspace) {
    if (QStandardPaths::findExecutable(QStringLiteral("import")).isEmpty())
        GTEST_SKIP() << "ImageMagick's import is not installed";
    startWindow("dock");
    ASSERT_TRUE(dockShowsThrough()) << "the dock should fill the top of the screen";
    startProgram();
    const WindowInfo placed = info(title);
    EXPECT_EQ(placed.geometry, QRect(0, 0, 45, 22));
    EXPECT_TRUE(placed.overrideRedirect);
    EXPECT_TRUE(WaitFor([&] { return !dockShowsThrough(); }, 3000));

    // A panel that comes later, or that is raised, is put back under the title.
    const QByteArray later = startWindow("dock");
    EXPECT_TRUE(WaitFor([&] { return !dockShowsThrough(); }, 3000));
    xdotool({QStringLiteral("windowraise"), QString::fromLatin1(later)});
    WaitFor([] { return false; }, 300);
    EXPECT_TRUE(WaitFor([&] { return !dockShowsThrough(); }, 3000));

    // Another workspace: the title is still there.
    const int desktops = xdotool({QStringLiteral("get_num_desktops")}).trimmed().toInt();
    ASSERT_GT(desktops, 1);
    xdotool({QStringLiteral("set_desktop"), QStringLiteral("1")});
    ASSERT_TRUE(WaitFor([&] { return xdotool({QStringLiteral("get_desktop")}).trimmed() == "1"; }));
    EXPECT_TRUE(info(title).viewable);
    EXPECT_EQ(info(title).geometry, QRect(0, 0, 45, 22));
    EXPECT_TRUE(WaitFor([&] { return !dockShowsThrough(); }, 3000));
}

TEST_F(TitlesDesktopTest, ClickingTheTitleLeavesTheFocusWhereItWas) {
    const QByteArray window = startWindow("normal");
    startProgram();
    xdotool({QStringLiteral("windowactivate"), QString::fromLatin1(window)});
    ASSERT_TRUE(WaitFor([&] { return activeWindow() == window.toULongLong(); }));
    QByteArray log;
    xdotool({QStringLiteral("mousemove"), QStringLiteral("20"), QStringLiteral("10"),
             QStringLiteral("click"), QStringLiteral("1")});
    EXPECT_TRUE(WaitFor([&] {
        log += program->readAllStandardError();
        return log.contains("title at 0,0 selected");
    })) << log.constData();
    // Give a focus change the time it would take, then look again.
    WaitFor([] { return false; }, 500);
    EXPECT_EQ(activeWindow(), window.toULongLong());
    EXPECT_TRUE(info(title).viewable);
}

TEST_F(TitlesDesktopTest, FullscreenWindowInFrontHidesTheTitleUntilItLeaves) {
    QProcess *process = nullptr;
    const QByteArray fullscreen = startWindow("normal", &process);
    startProgram();

    Send(process, "fullscreen");
    EXPECT_TRUE(WaitFor([&] { return !info(title).viewable; }, 5000));
    Send(process, "normal");
    EXPECT_TRUE(WaitFor([&] { return info(title).viewable; }, 5000));

    // Switching from the fullscreen window to another shows the title again.
    Send(process, "fullscreen");
    ASSERT_TRUE(WaitFor([&] { return !info(title).viewable; }, 5000));
    const QByteArray other = startWindow("normal");
    ASSERT_TRUE(WaitFor([&] { return activeWindow() == other.toULongLong(); }));
    EXPECT_TRUE(WaitFor([&] { return info(title).viewable; }, 5000));
    xdotool({QStringLiteral("windowactivate"), QString::fromLatin1(fullscreen)});
    EXPECT_TRUE(WaitFor([&] { return !info(title).viewable; }, 5000));
}

TEST_F(TitlesDesktopTest, HoverKeyHidesTheTitleWhileHeldOverIt) {
    // The default rule: hidden while the pointer is over the title with Super held.
    startProgram();
    xdotool({QStringLiteral("mousemove"), QStringLiteral("20"), QStringLiteral("10")});
    xdotool({QStringLiteral("keydown"), QStringLiteral("super")});
    EXPECT_TRUE(WaitFor([&] { return !info(title).viewable; }, 3000));
    xdotool({QStringLiteral("keyup"), QStringLiteral("super")});
    EXPECT_TRUE(WaitFor([&] { return info(title).viewable; }, 3000));

    xdotool({QStringLiteral("mousemove"), QStringLiteral("300"), QStringLiteral("300")});
    xdotool({QStringLiteral("keydown"), QStringLiteral("super")});
    WaitFor([] { return false; }, 300);
    EXPECT_TRUE(info(title).viewable);
    xdotool({QStringLiteral("keyup"), QStringLiteral("super")});
}

// Without a window manager nothing keeps a new window below the title: the
// title must raise itself again whenever a window is mapped or raised.
class TitlesBareDisplayTest : public TitlesDesktopTest {
protected:
    TitlesBareDisplayTest() : TitlesDesktopTest(WithoutWindowManager()) {}

    static DesktopSession::Options WithoutWindowManager() {
        DesktopSession::Options options;
        options.windowManager = false;
        return options;
    }
};

TEST_F(TitlesBareDisplayTest, TitleRaisesItselfAboveWindowsMappedOrRaisedLater) {
    if (QStandardPaths::findExecutable(QStringLiteral("import")).isEmpty())
        GTEST_SKIP() << "ImageMagick's import is not installed";
    startProgram();
    const QByteArray dock = startWindow("dock");
    EXPECT_TRUE(WaitFor([&] { return !dockShowsThrough(); }, 3000));
    xdotool({QStringLiteral("windowraise"), QString::fromLatin1(dock)});
    WaitFor([] { return false; }, 300);
    EXPECT_TRUE(WaitFor([&] { return !dockShowsThrough(); }, 3000));
    EXPECT_EQ(info(title).geometry, QRect(0, 0, 45, 22));
}

} // namespace
