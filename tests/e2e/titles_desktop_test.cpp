// The titles of the real program on a private desktop: at the corner above
// panels and in their colours, the focus left alone, stepping aside for a
// fullscreen window and for the hover key with the pointer coming from far
// away, following the screen when xrandr changes it, following the look that
// a real XSETTINGS manager and a settings portal on the bus publish, and the
// preferences dialog answering Alt+O.
#include "tests/e2e/titles_desktop.h"

#include <xcb/randr.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QFile>

#include <csignal>
#include <cstdlib>
#include <cstring>

namespace {

constexpr QRgb kDock = qRgb(255, 0, 255);

class TitlesDesktopTest : public ProgramOnDesktop {
protected:
    using ProgramOnDesktop::ProgramOnDesktop;

    // A test window, "dock" (a magenta panel across the top) or "normal";
    // its id once it is mapped.
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
    // Whether the title shows over the dock: its image, on the dock's own colour.
    bool titleOverDock() const {
        const QImage shot = screen(QRect(0, 0, 45, 22));
        return shot.pixel(2, 2) == kDock && shot.pixel(27, 11) != kDock;
    }
    qulonglong activeWindow() const { return xdo(QStringLiteral("getactivewindow")).toULongLong(); }
};

TEST_F(TitlesDesktopTest, TheTitleStandsAtTheCornerAbovePanelsInTheirColours) {
    startWindow("dock");
    startProgram();
    EXPECT_EQ(info(title).geometry, QRect(0, 0, 45, 22));
    EXPECT_TRUE(info(title).overrideRedirect);
    EXPECT_TRUE(WaitFor([&] { return titleOverDock(); }, 5000));
    // A panel that comes later, or is raised, is put back under the title.
    const QByteArray later = startWindow("dock");
    xdo(QStringLiteral("windowraise ") + QString::fromLatin1(later));
    EXPECT_TRUE(WaitFor([&] { return titleOverDock(); }, 5000));
    xdo(QStringLiteral("set_desktop 1"));
    ASSERT_TRUE(WaitFor([&] { return xdo(QStringLiteral("get_desktop")).trimmed() == "1"; }));
    EXPECT_TRUE(info(title).viewable) << "on every workspace";
}

TEST_F(TitlesDesktopTest, AClickLeavesTheFocusAndAFullscreenWindowHidesTheTitle) {
    QProcess *process = nullptr;
    const QByteArray window = startWindow("normal", &process);
    startProgram();
    xdo(QStringLiteral("windowactivate --sync ") + QString::fromLatin1(window));
    xdo(QStringLiteral("mousemove 20 10 click 1"));
    EXPECT_TRUE(WaitFor([&] { return log().contains("title at 0,0 selected"); }));
    xdo(QStringLiteral("key Escape"));

    process->write("fullscreen\n");
    EXPECT_TRUE(WaitFor([&] { return !info(title).viewable; }, 5000));
    EXPECT_EQ(activeWindow(), window.toULongLong()) << "the click took the focus";
    const QByteArray other = startWindow("normal");
    ASSERT_TRUE(WaitFor([&] { return activeWindow() == other.toULongLong(); }));
    EXPECT_TRUE(WaitFor([&] { return info(title).viewable; }, 5000));
}

TEST_F(TitlesDesktopTest, TheHoverKeyHidesTheTitleWithThePointerComingFromFarAway) {
    // The default rule: hidden while the pointer is over the title with Super held.
    moveTo(900, 700);
    startProgram();
    ASSERT_TRUE(WaitFor([&] { return log().contains("hover timer asleep"); })) << log().constData();
    moveTo(20, 10);
    xdo(QStringLiteral("keydown super"));
    EXPECT_TRUE(WaitFor([&] { return !info(title).viewable; }, 3000));
    xdo(QStringLiteral("keyup super"));
    EXPECT_TRUE(WaitFor([&] { return info(title).viewable; }, 3000));
    // With the key held, the pointer's coming and going alone decides.
    xdo(QStringLiteral("keydown super"));
    moveTo(300, 300);
    moveTo(20, 10);
    EXPECT_TRUE(WaitFor([&] { return !info(title).viewable; }, 3000));
    moveTo(600, 400);
    EXPECT_TRUE(WaitFor([&] { return info(title).viewable; }, 3000));
    xdo(QStringLiteral("keyup super"));
}

TEST_F(TitlesDesktopTest, TheTitleFollowsThePrimaryScreenWhenItsSizeOrDensityChanges) {
    if (QStandardPaths::findExecutable(QStringLiteral("xsettingsd")).isEmpty())
        GTEST_SKIP() << "xsettingsd is not installed";
    const QByteArray config = env.root() + "/xsettingsd.conf";
    WriteFile(config, "Xft/DPI 98304\n"); // 96 dots per inch, in 1024ths
    QProcess *settings =
        session.start(QStringLiteral("xsettingsd"),
                      {QStringLiteral("-c"), QFile::decodeName(config)}, environment());
    startProgram();
    // Xvfb knows one mode: a smaller one is made here and added to its output,
    // and this connection stays open so that xrandr finds it. Xvfb keeps the
    // screen's corner at 0,0 whatever xrandr asks.
    xcb_connection_t *x = xcb_connect(session.display().toLatin1().constData(), nullptr);
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(x)).data->root;
    auto *resources =
        xcb_randr_get_screen_resources_reply(x, xcb_randr_get_screen_resources(x, root), nullptr);
    ASSERT_NE(resources, nullptr);
    const char name[] = "kestrel-test";
    xcb_randr_mode_info_t mode{};
    mode.width = mode.htotal = 1024;
    mode.height = mode.vtotal = 600;
    mode.name_len = std::strlen(name);
    auto *made = xcb_randr_create_mode_reply(
        x, xcb_randr_create_mode(x, root, mode, mode.name_len, name), nullptr);
    ASSERT_NE(made, nullptr);
    xcb_randr_add_output_mode(x, xcb_randr_get_screen_resources_outputs(resources)[0], made->mode);
    xcb_flush(x);
    std::free(made);
    std::free(resources);

    int status = -1;
    session.run(QStringLiteral("xrandr"),
                QStringLiteral("--output screen --mode kestrel-test").split(u' '), 10000, &status);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(WaitFor([&] { return log().contains("top bar at 0,0, 1024 wide"); }))
        << log().constData();
    EXPECT_EQ(info(title).geometry, QRect(0, 0, 45, 22));
    // Twice the density: the same place and measures, in device pixels twice as many.
    WriteFile(config, "Xft/DPI 196608\n");
    ::kill(pid_t(settings->processId()), SIGHUP);
    EXPECT_TRUE(WaitFor([&] { return info(title).geometry == QRect(0, 0, 90, 44); }))
        << log().constData();
    EXPECT_TRUE(WaitFor([&] { return log().contains("top bar at 0,0, 512 wide"); }))
        << log().constData();
    session.run(QStringLiteral("xrandr"),
                QStringLiteral("--output screen --mode 1280x800").split(u' '));
    EXPECT_TRUE(WaitFor([&] { return log().contains("top bar at 0,0, 640 wide"); }));
    xcb_disconnect(x);
}

// org.freedesktop.portal.Settings on the test's own connection to the bus.
class FakeSettingsPortal final : public QDBusVirtualObject {
public:
    uint scheme = 2; // light
    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        if (message.member() != QLatin1String("ReadAll"))
            return false;
        const QMap<QString, QVariantMap> groups{{QStringLiteral("org.freedesktop.appearance"),
                                                 {{QStringLiteral("color-scheme"), scheme}}}};
        return bus.send(message.createReply(QVariant::fromValue(groups)));
    }
};

TEST_F(TitlesDesktopTest, TheLookFollowsXSettingsAndThePortalBeforeThem) {
    if (QStandardPaths::findExecutable(QStringLiteral("xsettingsd")).isEmpty())
        GTEST_SKIP() << "xsettingsd is not installed";
    const QByteArray config = env.root() + "/xsettingsd.conf";
    WriteFile(config, "Net/IconThemeName \"breeze\"\nNet/ThemeName \"Adwaita-dark\"\n");
    // The program reads the manager whenever it takes the display, before or after.
    QProcess *settings =
        session.start(QStringLiteral("xsettingsd"),
                      {QStringLiteral("-c"), QFile::decodeName(config)}, environment());
    startProgram();
    EXPECT_TRUE(WaitFor([&] {
        return log().contains("icon theme \"breeze-dark\", colour scheme dark");
    })) << log().constData();
    WriteFile(config, "Net/IconThemeName \"Adwaita\"\nNet/ThemeName \"Adwaita\"\n");
    ::kill(pid_t(settings->processId()), SIGHUP);
    EXPECT_TRUE(WaitFor([&] { return log().contains("icon theme \"Adwaita\", colour scheme as"); }))
        << log().constData();
    DesktopSession::stop(program);
    log_.clear();

    // A portal on the bus has the first word, and its changes are followed.
    qDBusRegisterMetaType<QMap<QString, QVariantMap>>();
    QDBusConnection bus =
        QDBusConnection::connectToBus(session.busAddress(), QStringLiteral("portal"));
    FakeSettingsPortal portal;
    const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
    ASSERT_TRUE(bus.registerVirtualObject(path, &portal));
    ASSERT_TRUE(bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
    WriteFile(config, "Net/ThemeName \"Adwaita-dark\"\n");
    ::kill(pid_t(settings->processId()), SIGHUP);
    startProgram();
    EXPECT_TRUE(WaitFor([&] { return log().contains("colour scheme light"); }))
        << log().constData();
    const qsizetype seen = log().size();
    QDBusMessage changed = QDBusMessage::createSignal(
        path, QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("SettingChanged"));
    changed << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme")
            << QVariant::fromValue(QDBusVariant(uint(1)));
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
    WaitFor([&] { return log().contains("title at 0,0 selected"); });
    xdo(QStringLiteral("key --delay 150 Up Right Down Return"));
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
    xdo(QStringLiteral("key Escape"));
    EXPECT_TRUE(WaitFor([&] { return !info(dialog).viewable; }));
}

// Without a window manager nothing keeps a new window below the title: it
// raises itself whenever a window is mapped or raised.
class TitlesBareDisplayTest : public TitlesDesktopTest {
protected:
    TitlesBareDisplayTest() : TitlesDesktopTest(DesktopSession::Options{false}) {}
};

TEST_F(TitlesBareDisplayTest, TheTitleRaisesItselfAboveWindowsMappedOrRaisedLater) {
    startProgram();
    const QByteArray dock = startWindow("dock");
    EXPECT_TRUE(WaitFor([&] { return screen(QRect(27, 11, 1, 1)).pixel(0, 0) != kDock; }, 5000));
    xdo(QStringLiteral("windowraise ") + QString::fromLatin1(dock));
    EXPECT_TRUE(WaitFor([&] { return screen(QRect(27, 11, 1, 1)).pixel(0, 0) != kDock; }, 5000));
}

} // namespace
