// Choosing items in the real program on a private desktop (Xvfb, openbox, a
// session bus with the desktop's metadata store and a fake file manager that
// records every request): what runs, what asks first, what says why, and that
// no click waits on another program, not even on a stopped bus.
#include "tests/support/desktopsession.h"
#include "tests/support/tempenvironment.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QByteArray kFake = KESTREL_FAKE_FILEMANAGER;

// What the fake file manager was asked, or how the fake application was
// started: "method", "uris", "token" and "pid".
QList<QVariantMap> Records(const QByteArray &log) {
    QList<QVariantMap> records;
    for (const QByteArray &line : ReadFile(log).split('\n')) {
        if (!line.isEmpty())
            records.append(QJsonDocument::fromJson(line).object().toVariantMap());
    }
    return records;
}

class ChoosingItems : public ::testing::Test {
protected:
    // The file manager is one the bus starts at the first request, or, when
    // `silent`, one that holds its name from the start and never answers.
    void Start() {
        const QByteArray services = root + "/services/", apps = root + "/data/applications/";
        const QByteArray fm = silent ? "/bin/false" : kFake + " " + fmLog;
        for (const auto &[name, exec] : {std::pair{"org.gtk.vfs.Daemon", "/usr/libexec/gvfsd"},
                                         {"org.gtk.vfs.Metadata", "/usr/libexec/gvfsd-metadata"},
                                         {"org.freedesktop.FileManager1", fm.constData()}})
            WriteFile(services + name + ".service",
                      "[D-BUS Service]\nName=" + QByteArray(name) + "\nExec=" + exec + "\n");
        DesktopSession::Options options;
        options.busServiceDir = QFile::decodeName(services);
        session = std::make_unique<DesktopSession>(options);
        ASSERT_TRUE(session->failure().isEmpty()) << qPrintable(session->failure());
        ASSERT_EQ(::access("/usr/libexec/gvfsd-metadata", X_OK), 0) << "GVfs is not installed";

        // This desktop's applications alone: the only one that says it opens
        // text runs in a terminal.
        const QByteArray entry =
            "[Desktop Entry]\nType=Application\nExec=" + kFake + " --program " + runLog + " ";
        WriteFile(apps + "viewer.desktop", entry + "viewer %F\nName=Viewer\n");
        WriteFile(apps + "console.desktop", entry + "console %F\nName=Console\nTerminal=true\n"
                                                    "MimeType=text/plain;\n");
        QProcessEnvironment env = session->environment(environment.processEnvironment());
        env.insert(u"XDG_DATA_DIRS"_s, QFile::decodeName(root + "/data"));
        env.insert(u"QT_LOGGING_RULES"_s, u"kestrel.*=true"_s);
        if (silent) {
            session->start(QFile::decodeName(kFake), {QFile::decodeName(fmLog), u"--silent"_s},
                           env);
            ASSERT_TRUE(WaitFor([&] { return !::Records(fmLog).isEmpty(); }));
        }
        program = session->start(QStringLiteral(KESTREL_PROGRAM), {}, env);
        ASSERT_TRUE(WaitForLog("running", 15000)) << log().constData();
        titles = Windows();

        // The first run's links give way to these items, in this order.
        for (const char *name : {"File System", "Applications", "home"})
            ::unlink((menu + name).constData());
        ::symlink((menu + "Docs/missing/../secret.txt").constData(), (menu + "broken").constData());
        WriteFile(menu + "Docs/secret.txt", "secret\n");
        WriteFile(menu + "holiday.desktop", entry + "holiday\nName=Holiday.pdf\n");
        WriteFile(menu + "notes.txt", "notes\n");
        WriteFile(menu + "tool.desktop", entry + "tool\nName=Tool.pdf\n");
        ::chmod((menu + "tool.desktop").constData(), 0755); // executable, yet not marked
        ::symlink((apps + "viewer.desktop").constData(), (menu + "viewer.desktop").constData());
    }

    void TearDown() override {
        if (busPid != 0)
            ::kill(busPid, SIGCONT);
        // A file manager that the bus started is this test's to stop.
        if (const QList<QVariantMap> started = ::Records(fmLog); !silent && !started.isEmpty())
            ::kill(pid_t(started.first()[u"pid"_s].toLongLong()), SIGTERM);
        session.reset();
    }

    const QByteArray &log() { return log_ += program->readAllStandardError(); }
    bool WaitForLog(const char *text, int timeoutMs = 10000) {
        return WaitFor([&] { return log().contains(text); }, timeoutMs);
    }
    QByteArray Xdotool(const QString &arguments) const {
        return session->run(u"xdotool"_s, arguments.split(u' '));
    }
    // The visible windows of the program that are not its titles.
    QList<QByteArray> Windows() const {
        QList<QByteArray> windows =
            Xdotool(u"search --onlyvisible --pid %1"_s.arg(program->processId())).split('\n');
        windows.removeIf([&](const QByteArray &w) { return w.isEmpty() || titles.contains(w); });
        return windows;
    }
    // A click on the title: whether its menu shows within three seconds, far
    // less than any bus time-out.
    bool ClickTitle() {
        Xdotool(u"mousemove 20 10 click 1"_s);
        return WaitFor([&] { return !Windows().isEmpty(); }, 3000);
    }
    // The n-th item of the menu, chosen with `key`; returns once the menu is gone.
    void Choose(int n, const QString &key = u"Return"_s) {
        ASSERT_TRUE(ClickTitle());
        const QList<QByteArray> menu = Windows();
        Xdotool(u"key "_s + u"Down "_s.repeated(n) + key);
        ASSERT_TRUE(WaitFor([&] { return !Windows().contains(menu.first()); }));
    }
    // Presses `keys` in the program's alert or dialog once it has the input
    // focus, and waits for it to go.
    void Answer(const QString &keys) {
        ASSERT_TRUE(WaitFor([&] { return !Windows().isEmpty(); }));
        const QByteArray window = Windows().first();
        Xdotool(u"windowactivate --sync "_s + QString::fromLatin1(window));
        ASSERT_TRUE(WaitFor([&] { return Xdotool(u"getwindowfocus"_s).trimmed() == window; }));
        Xdotool(u"key "_s + keys);
        ASSERT_TRUE(WaitFor([&] { return !Windows().contains(window); }));
    }
    QList<QVariantMap> Records(const QByteArray &log, qsizetype count) {
        WaitFor([&] { return ::Records(log).size() >= count; });
        return ::Records(log);
    }

    TempEnvironment environment;
    QByteArray root = environment.root(), fmLog = root + "/fm.log", runLog = root + "/runs.log";
    QByteArray menu = environment.configHome() + "/Kestrel Menu Items/";
    std::unique_ptr<DesktopSession> session;
    QProcess *program = nullptr;
    QByteArray log_;
    QList<QByteArray> titles;
    pid_t busPid = 0;
    bool silent = false;
};

TEST_F(ChoosingItems, LaunchersRunOnlyWhenTrustedAndFailuresSayWhy) {
    Start();
    Choose(3);                                          // holiday.desktop, shown by its file name
    ASSERT_TRUE(WaitForLog("asking before launching")); // a cancel: FinderEventsTest
    Answer(u"alt+l"_s);
    EXPECT_TRUE(Records(runLog, 1).value(0)[u"token"_s].toString().contains("_TIME"_L1))
        << "it may come forward";
    Choose(3);
    Answer(u"alt+t"_s);
    ASSERT_TRUE(WaitForLog("marked as trusted")) << log().constData();
    EXPECT_EQ(::access((menu + "holiday.desktop").constData(), X_OK), 0);
    Choose(3); // now "Holiday.pdf", in the same place
    Choose(6); // a link to an installed application
    ASSERT_EQ(Records(runLog, 4).size(), 4);
    EXPECT_EQ(::Records(runLog)[3][u"uris"_s].toStringList(), QStringList{u"viewer"_s});
    EXPECT_EQ(log().count("asking before launching"), 2);

    Choose(1); // the broken link, whose ".." must not reach the file beside it
    ASSERT_TRUE(WaitForLog("alert: “broken” points to")) << log().constData();
    Answer(u"alt+s"_s); // Show in Folder
    const QList<QVariantMap> requests = Records(fmLog, 2);
    ASSERT_EQ(requests.size(), 2);
    EXPECT_EQ(requests[1][u"method"_s], u"ShowItems"_s);
    EXPECT_EQ(
        requests[1][u"uris"_s].toStringList(),
        QStringList{QString::fromLatin1("file://" + (menu + "broken").toPercentEncoding("/"))});
    EXPECT_TRUE(requests[1][u"token"_s].toString().contains("_TIME"_L1));

    Choose(4); // notes.txt: its one application runs in a terminal
    ASSERT_TRUE(WaitForLog("alert: No application is set to open “notes.txt”"));
    Answer(u"alt+o"_s);
    // Console first, then the others: Viewer, and as the default from now on.
    Answer(u"Down Tab space Return"_s);
    Choose(4);
    const QList<QVariantMap> runs = Records(runLog, 6).mid(4);
    ASSERT_EQ(runs.size(), 2);
    for (const QVariantMap &run : runs)
        EXPECT_EQ(run[u"uris"_s].toStringList(),
                  (QStringList{u"viewer"_s, QFile::decodeName(menu + "notes.txt")}));
    EXPECT_EQ(log().count("alert:"), 2);
}

TEST_F(ChoosingItems, NoClickWaitsOnAnotherProgram) {
    silent = true;
    Start();
    // With the session bus stopped the menu still shows (with a launcher whose
    // trust mark is looked up), a request is sent, and the title answers.
    QDBusConnection bus = QDBusConnection::connectToBus(session->busAddress(), u"test"_s);
    busPid = pid_t(bus.interface()->servicePid(u"org.freedesktop.DBus"_s).value());
    QDBusConnection::disconnectFromBus(u"test"_s);
    ASSERT_EQ(::kill(busPid, SIGSTOP), 0);
    Choose(2, u"space"_s); // Docs
    EXPECT_TRUE(ClickTitle());
    Xdotool(u"key Escape"_s);
    ::kill(std::exchange(busPid, 0), SIGCONT);

    // The file manager has the request and never answers.
    ASSERT_EQ(Records(fmLog, 2).size(), 2);
    EXPECT_TRUE(ClickTitle());
    Xdotool(u"key Escape"_s);
    EXPECT_TRUE(WaitForLog("did not answer in time to show “Docs”", 40000)) << log().constData();
}

} // namespace
