// Choosing items in the real program on a private desktop (Xvfb, openbox, a
// session bus with the desktop's metadata store and a fake file manager that
// records every request): what runs, what asks first, what says why, and that
// no click waits on another program, not even on a stopped bus.
#include "tests/support/desktopsession.h"
#include "tests/support/tempenvironment.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QByteArray kFake = KESTREL_FAKE_FILEMANAGER;

struct Record {
    QString method;
    QStringList uris;
    QString token;
    qint64 pid = 0;
};

QList<Record> Records(const QByteArray &log) {
    QList<Record> records;
    for (const QByteArray &line : ReadFile(log).split('\n')) {
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        if (object.isEmpty())
            continue;
        Record record{object.value(QStringLiteral("method")).toString(),
                      {},
                      object.value(QStringLiteral("token")).toString(),
                      object.value(QStringLiteral("pid")).toInteger()};
        for (const QJsonValue &uri : object.value(QStringLiteral("uris")).toArray())
            record.uris.append(uri.toString());
        records.append(record);
    }
    return records;
}

class ChoosingItems : public ::testing::Test {
protected:
    // The file manager is one the bus starts at the first request, or, when
    // `silent`, one that holds its name from the start and never answers.
    void Start(bool silent) {
        const QByteArray services = root + "/services/";
        WriteFile(services + "vfs.service",
                  "[D-BUS Service]\nName=org.gtk.vfs.Daemon\nExec=/usr/libexec/gvfsd\n");
        WriteFile(services + "metadata.service",
                  "[D-BUS Service]\nName=org.gtk.vfs.Metadata\nExec=/usr/libexec/gvfsd-metadata\n");
        if (!silent)
            WriteFile(services + "fm.service",
                      "[D-BUS Service]\nName=org.freedesktop.FileManager1\n"
                      "Exec=" +
                          kFake + " " + fmLog + "\n");
        DesktopSession::Options options;
        options.busServiceDir = QFile::decodeName(services);
        session = std::make_unique<DesktopSession>(options);
        ASSERT_TRUE(session->failure().isEmpty()) << qPrintable(session->failure());
        ASSERT_EQ(::access("/usr/libexec/gvfsd-metadata", X_OK), 0) << "GVfs is not installed";

        // Applications and types of this desktop alone.
        WriteFile(root + "/data/applications/viewer.desktop",
                  "[Desktop Entry]\nType=Application\nName=Viewer\nExec=" + kFake + " --program " +
                      runLog + " viewer %F\nMimeType=text/x-kestrel-note;\n");
        WriteFile(root + "/data/mime/packages/k.xml",
                  "<?xml version=\"1.0\"?><mime-info xmlns=\"http://www.freedesktop.org/standards/"
                  "shared-mime-info\"><mime-type type=\"text/x-kestrel-note\"><glob "
                  "pattern=\"*.knote\"/></mime-type></mime-info>\n");
        QProcess mime;
        mime.start(QStringLiteral("update-mime-database"),
                   {QFile::decodeName(root + "/data/mime")});
        ASSERT_TRUE(mime.waitForFinished(30000) && mime.exitCode() == 0);
        QProcessEnvironment env = session->environment(environment.processEnvironment());
        env.insert(QStringLiteral("XDG_DATA_DIRS"), QFile::decodeName(root + "/data"));
        env.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("kestrel.*=true"));
        if (silent) {
            session->start(QFile::decodeName(kFake),
                           {QFile::decodeName(fmLog), QStringLiteral("--silent")}, env);
            ASSERT_TRUE(WaitFor([&] { return !Records(fmLog).isEmpty(); }));
        }
        program = session->start(QStringLiteral(KESTREL_PROGRAM), {}, env);
        ASSERT_TRUE(WaitForLog("running", 1, 15000)) << log().constData();
        titles = Windows();

        // The first run's links give way to the items chosen here, in this order.
        const QByteArray menu = environment.configHome() + "/Kestrel Menu Items/";
        for (const char *name : {"File System", "applications", "home"})
            ::unlink((menu + name).constData());
        ::symlink((menu + "Docs/missing/../secret.knote").constData(),
                  (menu + "broken link").constData());
        WriteFile(menu + "Docs/secret.knote", "secret\n");
        WriteFile(menu + "holiday.desktop",
                  "[Desktop Entry]\nType=Application\nName=Holiday Photos.pdf\n"
                  "Icon=application-pdf\nExec=" +
                      kFake + " --program " + runLog + " holiday\n");
        WriteFile(menu + "notes.kunknown", QByteArray("\0\1\2\3", 4));
        WriteFile(menu + "tool.desktop", ReadFile(menu + "holiday.desktop"));
        ::chmod((menu + "tool.desktop").constData(), 0755); // executable, yet not marked
        ::symlink((root + "/data/applications/viewer.desktop").constData(),
                  (menu + "viewer.desktop").constData());
    }

    void TearDown() override {
        if (busPid != 0)
            ::kill(busPid, SIGCONT);
        // A file manager that the bus started is this test's to stop.
        for (const Record &record : Records(fmLog)) {
            if (record.method == QStringLiteral("Started") && busStarted)
                ::kill(pid_t(record.pid), SIGTERM);
        }
        session.reset();
    }

    const QByteArray &log() {
        log_ += program->readAllStandardError();
        return log_;
    }
    bool WaitForLog(const char *text, qsizetype count, int timeoutMs = 10000) {
        return WaitFor([&] { return log().count(text) >= count; }, timeoutMs);
    }
    QByteArray Xdotool(const QString &arguments) const {
        return session->run(QStringLiteral("xdotool"), arguments.split(u' '));
    }
    // The visible windows of the program.
    QList<QByteArray> Windows() const {
        QList<QByteArray> windows =
            Xdotool(QStringLiteral("search --onlyvisible --pid %1").arg(program->processId()))
                .split('\n');
        windows.removeAll(QByteArray());
        return windows;
    }
    // A click on the title; the windows it showed within three seconds, far
    // less than any bus time-out: its menu.
    QList<QByteArray> ClickTitle() {
        const QList<QByteArray> before = Windows();
        QList<QByteArray> shown;
        Xdotool(QStringLiteral("mousemove 20 10 click 1"));
        WaitFor(
            [&] {
                shown = Windows();
                shown.removeIf([&](const QByteArray &window) { return before.contains(window); });
                return !shown.isEmpty();
            },
            3000);
        return shown;
    }
    // The n-th item of the menu, chosen with `key`; returns once the menu is gone.
    void Choose(int n, const QString &key = QStringLiteral("Return")) {
        const QList<QByteArray> menu = ClickTitle();
        ASSERT_FALSE(menu.isEmpty());
        Xdotool(QStringLiteral("key ") + QStringLiteral("Down ").repeated(n) + key);
        ASSERT_TRUE(WaitFor([&] {
            const QList<QByteArray> windows = Windows();
            return std::none_of(menu.begin(), menu.end(),
                                [&](const QByteArray &window) { return windows.contains(window); });
        }));
    }
    // Presses `keys` in the program's alert or dialog, and waits for it to go.
    void Answer(const QString &keys) {
        QByteArray window;
        ASSERT_TRUE(WaitFor([&] {
            window.clear();
            for (const QByteArray &shown : Windows()) {
                if (!titles.contains(shown))
                    window = shown;
            }
            return !window.isEmpty();
        }));
        // Keys go where the input focus is: to the window, once it has it.
        Xdotool(QStringLiteral("windowactivate --sync ") + QString::fromLatin1(window));
        ASSERT_TRUE(
            WaitFor([&] { return Xdotool(QStringLiteral("getwindowfocus")).trimmed() == window; }));
        Xdotool(QStringLiteral("key ") + keys);
        ASSERT_TRUE(WaitFor([&] { return !Windows().contains(window); }));
    }
    QList<Record> Runs(qsizetype count) {
        WaitFor([&] { return Records(runLog).size() >= count; });
        return Records(runLog);
    }

    TempEnvironment environment;
    QByteArray root = environment.root();
    QByteArray fmLog = root + "/fm.log", runLog = root + "/runs.log";
    std::unique_ptr<DesktopSession> session;
    QProcess *program = nullptr;
    QByteArray log_;
    QList<QByteArray> titles; // the program's windows when nothing else is up
    pid_t busPid = 0;
    bool busStarted = true;
};

TEST_F(ChoosingItems, LaunchersRunOnlyWhenTrusted) {
    Start(false);
    const QByteArray holiday = environment.configHome() + "/Kestrel Menu Items/holiday.desktop";
    Choose(3); // holiday.desktop, shown by its file name
    ASSERT_TRUE(WaitForLog("asking before launching", 1));
    Answer(QStringLiteral("Escape"));
    EXPECT_TRUE(Records(runLog).isEmpty()) << "nothing runs until the user says so";
    Choose(3);
    Answer(QStringLiteral("alt+l"));
    ASSERT_EQ(Runs(1).size(), 1);
    EXPECT_TRUE(Runs(1).first().token.contains(QStringLiteral("_TIME"))) << "it may come forward";
    Choose(3);
    Answer(QStringLiteral("alt+t"));
    ASSERT_TRUE(WaitForLog("marked as trusted", 1)) << log().constData();
    EXPECT_EQ(::access(holiday.constData(), X_OK), 0);
    Choose(3); // now "Holiday Photos.pdf", in the same place
    Choose(6); // a link to an installed application
    const QList<Record> runs = Runs(4);
    ASSERT_EQ(runs.size(), 4);
    EXPECT_EQ(runs[3].uris, QStringList{QStringLiteral("viewer")});
    EXPECT_EQ(log().count("asking before launching"), 3);
}

TEST_F(ChoosingItems, FailedChoicesSayWhy) {
    Start(false);
    const QByteArray menu = environment.configHome() + "/Kestrel Menu Items/";
    Choose(1); // the broken link, whose ".." must not lead to the file beside it
    ASSERT_TRUE(WaitForLog("alert: “broken link” points to", 1)) << log().constData();
    Answer(QStringLiteral("alt+s")); // Show in Folder
    WaitFor([&] { return Records(fmLog).size() >= 2; });
    const QList<Record> requests = Records(fmLog);
    ASSERT_EQ(requests.size(), 2);
    EXPECT_EQ(requests[1].method, QStringLiteral("ShowItems"));
    EXPECT_EQ(requests[1].uris.value(0),
              QString::fromLatin1("file://" + (menu + "broken link").toPercentEncoding("/")));
    EXPECT_TRUE(requests[1].token.contains(QStringLiteral("_TIME")));

    Choose(4); // notes.kunknown: nothing opens it
    ASSERT_TRUE(WaitForLog("alert: No application is set to open “notes.kunknown”", 1));
    Answer(QStringLiteral("alt+o"));
    Answer(QStringLiteral("Tab space Return")); // Viewer, and as the default from now on
    Choose(4);
    const QList<Record> runs = Runs(2);
    ASSERT_EQ(runs.size(), 2);
    for (const Record &run : runs)
        EXPECT_EQ(run.uris,
                  (QStringList{QStringLiteral("viewer"),
                               QFile::decodeName(menu) + QStringLiteral("notes.kunknown")}));
    EXPECT_EQ(log().count("alert:"), 2);
}

TEST_F(ChoosingItems, NoClickWaitsOnAnotherProgram) {
    busStarted = false;
    Start(true);
    // The session bus stopped: the menu, with a launcher whose trust mark must
    // be looked up, and a request sent, and the title still answers.
    QDBusConnection bus =
        QDBusConnection::connectToBus(session->busAddress(), QStringLiteral("test"));
    busPid = pid_t(bus.interface()->servicePid(QStringLiteral("org.freedesktop.DBus")).value());
    QDBusConnection::disconnectFromBus(QStringLiteral("test"));
    ASSERT_GT(busPid, 0);
    ASSERT_EQ(::kill(busPid, SIGSTOP), 0);
    Choose(2, QStringLiteral("space")); // Docs
    EXPECT_FALSE(ClickTitle().isEmpty());
    Xdotool(QStringLiteral("key Escape"));
    ::kill(busPid, SIGCONT);
    busPid = 0;

    // The file manager has the request and never answers.
    ASSERT_TRUE(WaitFor([&] { return Records(fmLog).size() >= 2; }));
    EXPECT_FALSE(ClickTitle().isEmpty());
    Xdotool(QStringLiteral("key Escape"));
    EXPECT_TRUE(WaitForLog("did not answer in time to show “Docs”", 1, 40000)) << log().constData();
}

} // namespace
