// The titles of the real program on a private desktop (Xvfb, openbox, a
// session bus that offers a file manager, as desktops do): at the corner above
// panels and in their colours, the focus left alone, stepping aside for a
// fullscreen window and for the hover key with the pointer coming from far
// away, following the screen as xrandr and the pixel density change it, the
// look a real XSETTINGS manager and a settings portal on the bus publish, and
// the preferences answering Alt+O.
#include "tests/support/desktopsession.h"
#include "tests/support/tempenvironment.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QFile>
#include <QImage>
#include <gtest/gtest.h>

#include <csignal>

namespace {

constexpr QRgb kDock = qRgb(255, 0, 255);

class TitlesDesktopTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(session.failure().isEmpty()); }

    QProcessEnvironment environment() const {
        QProcessEnvironment environment = session.environment(env.processEnvironment());
        environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("kestrel.*=true"));
        return environment;
    }
    // Starts the program and waits until its title shows and it runs.
    void startProgram() {
        program = session.start(QStringLiteral(KESTREL_PROGRAM), {}, environment());
        ASSERT_TRUE(WaitFor([&] {
            title = xdo(QStringLiteral("search --name ^Kestrel.Menu.title$")).trimmed();
            return !title.isEmpty() && viewable(title) && log().contains("running");
        })) << log().constData();
    }
    const QByteArray &log() {
        log_ += program->readAllStandardError();
        return log_;
    }
    bool logged(const char *line) {
        return WaitFor([&] { return log().contains(line); });
    }
    // A test window (see titles_window.cpp); its id once it is mapped.
    QByteArray startWindow(const char *kind, QProcess **process = nullptr) {
        QProcess *window = session.start(QStringLiteral(KESTREL_TITLES_WINDOW),
                                         {QLatin1String(kind)}, environment());
        EXPECT_TRUE(WaitFor([&] { return window->canReadLine(); }));
        const QByteArray id = window->readLine().trimmed();
        EXPECT_TRUE(WaitFor([&] { return viewable(id); }));
        if (process != nullptr)
            *process = window;
        return id;
    }
    // xsettingsd publishing `settings`: started, or told to read them again.
    QProcess *publish(const QByteArray &settings, QProcess *manager = nullptr) {
        const QByteArray file = env.root() + "/xsettingsd.conf";
        WriteFile(file, settings);
        if (manager == nullptr)
            return session.start(QStringLiteral("xsettingsd"),
                                 {QStringLiteral("-c"), QFile::decodeName(file)}, environment());
        ::kill(pid_t(manager->processId()), SIGHUP);
        return manager;
    }

    // xdotool with its arguments as one line ("mousemove 20 10 click 1").
    QByteArray xdo(const QString &arguments) const {
        return session.run(QStringLiteral("xdotool"), arguments.split(u' '));
    }
    // Moves the pointer as a mouse does, so that the display reports it as
    // input; xdotool's "mousemove" warps it, which is not input.
    void moveTo(int x, int y) const {
        xdo(QStringLiteral("mousemove %1 %2 mousemove_relative -- -1 0").arg(x + 1).arg(y));
    }
    // The program's windows on the screen: its title, and its menus while they show.
    qsizetype windowsShown() const {
        return xdo(QStringLiteral("search --onlyvisible --pid %1").arg(program->processId()))
            .count('\n');
    }
    bool viewable(const QByteArray &id) const {
        return session
            .run(QStringLiteral("xwininfo"), {QStringLiteral("-id"), QString::fromLatin1(id)})
            .contains("IsViewable");
    }
    QRect geometry(const QByteArray &id) const {
        QList<int> shell; // WINDOW, X, Y, WIDTH, HEIGHT, SCREEN
        for (const QByteArray &line :
             xdo(QStringLiteral("getwindowgeometry --shell ") + QLatin1String(id)).split('\n'))
            shell.append(line.mid(line.indexOf('=') + 1).toInt());
        return {shell.value(1), shell.value(2), shell.value(3), shell.value(4)};
    }
    // Whether the title shows over the dock: its image, on the dock's own colour.
    bool titleOverDock() const {
        const QImage shot = QImage::fromData(
            session.run(QStringLiteral("import"),
                        QStringLiteral("-window root -crop 45x22+0+0 png:-").split(u' ')));
        return shot.pixel(2, 2) == kDock && shot.pixel(27, 11) != kDock;
    }

    TempEnvironment env;
    DesktopSession session{[] {
        DesktopSession::Options options; // a file manager offered, never started
        options.activatableNames = {QStringLiteral("org.freedesktop.FileManager1")};
        return options;
    }()};
    QProcess *program = nullptr;
    QByteArray title;
    QByteArray log_;
};

TEST_F(TitlesDesktopTest, TheTitleStandsAtTheCornerAbovePanelsInTheirColours) {
    startWindow("dock");
    startProgram();
    EXPECT_EQ(geometry(title), QRect(0, 0, 45, 22));
    EXPECT_TRUE(WaitFor([&] { return titleOverDock(); }));
    // A panel raised later is put back under the title.
    xdo(QStringLiteral("windowraise ") + QString::fromLatin1(startWindow("dock")));
    EXPECT_TRUE(WaitFor([&] { return titleOverDock(); }));
}

TEST_F(TitlesDesktopTest, AClickLeavesTheFocusAndAFullscreenWindowHidesTheTitle) {
    QProcess *process = nullptr;
    const QByteArray window = startWindow("normal", &process);
    startProgram();
    xdo(QStringLiteral("windowactivate --sync ") + QString::fromLatin1(window));
    xdo(QStringLiteral("mousemove 20 10 click 1"));
    EXPECT_TRUE(logged("title at 0,0 selected"));
    xdo(QStringLiteral("key Escape"));
    process->write("fullscreen\n");
    EXPECT_TRUE(WaitFor([&] { return !viewable(title); }));
    EXPECT_EQ(xdo(QStringLiteral("getactivewindow")).trimmed(), window)
        << "the click took the focus";
}

TEST_F(TitlesDesktopTest, TheHoverKeyHidesTheTitleWithThePointerComingFromFarAway) {
    // The default rule: hidden while the pointer is over the title with Super held.
    moveTo(900, 700);
    startProgram();
    ASSERT_TRUE(logged("hover timer asleep")) << log().constData();
    // The key held while the pointer comes, the key alone, the pointer leaving.
    xdo(QStringLiteral("keydown super"));
    moveTo(300, 300);
    moveTo(20, 10);
    EXPECT_TRUE(WaitFor([&] { return !viewable(title); }));
    xdo(QStringLiteral("keyup super"));
    EXPECT_TRUE(WaitFor([&] { return viewable(title); }));
    xdo(QStringLiteral("keydown super"));
    EXPECT_TRUE(WaitFor([&] { return !viewable(title); }));
    moveTo(600, 400);
    EXPECT_TRUE(WaitFor([&] { return viewable(title); }));
    xdo(QStringLiteral("keyup super"));
}

TEST_F(TitlesDesktopTest, TheTitleFollowsThePrimaryScreenWhenItsSizeOrDensityChanges) {
    QProcess *settings = publish("Xft/DPI 98304\n"); // 96 dots per inch
    startProgram();
    // Xvfb knows one mode: a smaller one is made and added to its output. (Xvfb
    // keeps the screen's corner at 0,0 whatever xrandr asks.)
    for (const char *command : {"--newmode kestrel-test 60 1024 1024 1024 1024 600 600 600 600",
                                "--addmode screen kestrel-test"})
        session.run(QStringLiteral("xrandr"), QString::fromLatin1(command).split(u' '));
    session.run(QStringLiteral("xrandr"),
                QStringLiteral("--output screen --mode kestrel-test").split(u' '));
    EXPECT_TRUE(logged("top bar at 0,0, 1024 wide")) << log().constData();
    // Twice the density: the same place and measures, twice the device pixels.
    publish("Xft/DPI 196608\n", settings);
    EXPECT_TRUE(WaitFor([&] { return geometry(title) == QRect(0, 0, 90, 44); }))
        << log().constData();
    EXPECT_TRUE(logged("top bar at 0,0, 512 wide"));
    session.run(QStringLiteral("xrandr"),
                QStringLiteral("--output screen --mode 1280x800").split(u' '));
    EXPECT_TRUE(logged("top bar at 0,0, 640 wide"));
}

// org.freedesktop.portal.Settings, answered on the test's own connection to the bus.
class FakeSettingsPortal final : public QDBusVirtualObject {
public:
    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        const QMap<QString, QVariantMap> light{
            {QStringLiteral("org.freedesktop.appearance"), {{QStringLiteral("color-scheme"), 2u}}}};
        return message.member() == QLatin1String("ReadAll") &&
               bus.send(message.createReply(QVariant::fromValue(light)));
    }
};

TEST_F(TitlesDesktopTest, TheLookFollowsTheToolkitSettingsAndThePortalBeforeThem) {
    // GTK's settings.ini until a settings manager takes the display, then the manager's.
    WriteFile(env.configHome() + "/gtk-3.0/settings.ini",
              "[Settings]\ngtk-icon-theme-name=breeze\ngtk-application-prefer-dark-theme=1\n");
    startProgram();
    EXPECT_TRUE(logged("icon theme \"breeze-dark\", colour scheme dark")) << log().constData();
    QProcess *settings = publish("Net/IconThemeName \"Adwaita\"\nNet/ThemeName \"Adwaita\"\n");
    EXPECT_TRUE(logged("icon theme \"Adwaita\", colour scheme as")) << log().constData();
    DesktopSession::stop(program);

    // A portal on the bus has the first word, and its changes are followed.
    qDBusRegisterMetaType<QMap<QString, QVariantMap>>();
    QDBusConnection bus =
        QDBusConnection::connectToBus(session.busAddress(), QStringLiteral("portal"));
    FakeSettingsPortal portal;
    const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
    ASSERT_TRUE(bus.registerVirtualObject(path, &portal));
    ASSERT_TRUE(bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
    publish("Net/ThemeName \"Adwaita-dark\"\n", settings);
    log_.clear();
    startProgram();
    EXPECT_TRUE(logged("colour scheme light")) << log().constData();
    const qsizetype seen = log().size();
    QDBusMessage changed = QDBusMessage::createSignal(
        path, QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("SettingChanged"));
    changed << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme")
            << QVariant::fromValue(QDBusVariant(1u));
    bus.send(changed);
    EXPECT_TRUE(WaitFor([&] { return log().indexOf("colour scheme dark", seen) > 0; }))
        << log().constData();
    bus.unregisterObject(path);
    QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
}

TEST_F(TitlesDesktopTest, AltOInThePreferencesTogglesOpenAtLogin) {
    startProgram();
    const QString entry = QFile::decodeName(env.configHome() + "/autostart/kestrel-menu.desktop");
    ASSERT_TRUE(WaitFor([&] { return QFile::exists(entry); })) << "on by default";
    // The program's commands are the menu's last submenu; Preferences is their second item.
    xdo(QStringLiteral("mousemove 20 10 click 1"));
    ASSERT_TRUE(WaitFor([&] { return windowsShown() == 2; })) << "the title and its menu";
    xdo(QStringLiteral("key Up Right"));
    ASSERT_TRUE(WaitFor([&] { return windowsShown() == 3; })) << "and the submenu";
    xdo(QStringLiteral("key Down Return"));
    QByteArray dialog;
    ASSERT_TRUE(WaitFor([&] {
        dialog =
            xdo(QStringLiteral("search --onlyvisible --name ^Kestrel.Menu.Preferences$")).trimmed();
        return !dialog.isEmpty();
    })) << log().constData();
    xdo(QStringLiteral("windowactivate --sync ") + QString::fromLatin1(dialog));
    xdo(QStringLiteral("key alt+o"));
    EXPECT_TRUE(WaitFor([&] { return !QFile::exists(entry); }));
    xdo(QStringLiteral("key alt+o"));
    EXPECT_TRUE(WaitFor([&] { return QFile::exists(entry); }));
}

} // namespace
