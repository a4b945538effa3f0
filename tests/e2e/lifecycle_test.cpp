// The whole program under a private desktop: the first start, quitting,
// settings that cannot be saved, a damaged settings file, one copy at a time,
// and mount events.
#include "core/desktopentry.h"
#include "tests/support/desktopsession.h"
#include "tests/support/tempenvironment.h"

#include <QDBusConnection>
#include <QDir>
#include <QFileInfo>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The desktop's notification server, speaking the real protocol on the bus.
class NotificationServer : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    QStringList received; // summary and body of each

public Q_SLOTS:
    uint Notify(const QString &, uint, const QString &, const QString &summary, const QString &body,
                const QStringList &, const QVariantMap &, int) {
        received.append(summary + u'\n' + body);
        return uint(received.size());
    }
};

class LifecycleTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(session.failure().isEmpty());
        QDBusConnection bus = QDBusConnection::connectToBus(session.busAddress(), kBusName);
        ASSERT_TRUE(bus.registerObject(QStringLiteral("/org/freedesktop/Notifications"),
                                       &notifications, QDBusConnection::ExportAllSlots));
        ASSERT_TRUE(bus.registerService(QStringLiteral("org.freedesktop.Notifications")));
    }
    void TearDown() override { QDBusConnection::disconnectFromBus(kBusName); }

    QProcessEnvironment environment() const {
        QProcessEnvironment environment = session.environment(env.processEnvironment());
        environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("kestrel.*=true"));
        return environment;
    }

    // As root the program runs without the power to pass over file permissions,
    // so that read-only and unreadable mean what they mean to users. `running`:
    // returns once it is past start-up. `command` goes before the program's path.
    QProcess *startProgram(QProcessEnvironment environment = {}, bool running = true,
                           QStringList command = {}) {
        command.append(QStringLiteral(KESTREL_PROGRAM));
        if (::geteuid() == 0)
            command = QStringList{QStringLiteral("setpriv"),
                                  QStringLiteral("--inh-caps=-dac_override,-dac_read_search"),
                                  QStringLiteral("--bounding-set=-dac_override,-dac_read_search")} +
                      command;
        QProcess *program =
            session.start(command.takeFirst(), command,
                          environment.isEmpty() ? this->environment() : environment);
        QByteArray log;
        EXPECT_TRUE(!running || waitForLog(program, "running", &log)) << log.constData();
        return program;
    }
    // Collects what the program wrote to standard error until `text` shows.
    static bool waitForLog(QProcess *program, const QByteArray &text, QByteArray *log) {
        return WaitFor([&] { return log->append(program->readAllStandardError()).contains(text); },
                       15000);
    }
    QList<QByteArray> windows(const QString &name) const {
        const QStringList search{QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                 QStringLiteral("--name"), name};
        return session.run(QStringLiteral("xdotool"), search).trimmed().split('\n');
    }
    // An alert of the program's, in front, with the keyboard.
    bool alertInFront() const {
        const QByteArray active =
            session.run(QStringLiteral("xdotool"), {QStringLiteral("getactivewindow")}).trimmed();
        return !active.isEmpty() && windows(QStringLiteral("^Kestrel Menu$")).contains(active);
    }
    void key(const QString &name) const {
        session.run(QStringLiteral("xdotool"), {QStringLiteral("key"), name});
    }

    QByteArray prefsFile() const { return env.configHome() + "/Kestrel Menu Preferences"; }
    QStringList configEntries(const QByteArray &folder) const {
        return QDir(QFile::decodeName(folder))
            .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }

    // The desktop offers a file manager, so that the program has one to bring forward.
    static DesktopSession::Options WithFileManager() {
        DesktopSession::Options options;
        options.activatableNames = {QStringLiteral("org.freedesktop.FileManager1")};
        return options;
    }

    static constexpr QLatin1StringView kBusName{"lifecycle"};
    TempEnvironment env;
    DesktopSession session{WithFileManager()};
    NotificationServer notifications;
};

TEST_F(LifecycleTest, QuittingNeverWaitsAndSettingsThatCannotBeSavedAreNotified) {
    // Each quit signal ends the run cleanly; the first run writes the file, the
    // others read it back and save the same bytes.
    QByteArray saved;
    for (int signal : {SIGINT, SIGHUP, SIGTERM}) {
        QProcess *program = startProgram();
        ::kill(pid_t(program->processId()), signal);
        ASSERT_TRUE(program->waitForFinished(5000) && program->exitCode() == 0) << signal;
        EXPECT_TRUE(saved.isEmpty() || ReadFile(prefsFile()) == saved) << signal;
        saved = ReadFile(prefsFile());
    }
    ASSERT_TRUE(saved.endsWith(QByteArray("end!\0\0\0\0", 8)));
    // The first run made the login item of this very program.
    const auto autostart = DesktopEntry::read(env.configHome() + "/autostart/kestrel-menu.desktop");
    const QByteArray self = QFileInfo(QStringLiteral(KESTREL_PROGRAM)).canonicalFilePath().toUtf8();
    EXPECT_EQ(autostart.value().execProgram(), self);
    EXPECT_EQ(autostart.value().value(QStringLiteral("TryExec")), QFile::decodeName(self));
    const QByteArray config = env.configHome();
    const QByteArray target = env.root() + "/dotfiles/kestrel";
    enum Outcome { Notified, WrittenThroughTheLink, ReportedAtStart };
    struct Case {
        const char *what;
        std::function<bool()> make; // false: cannot be made here
        std::function<void()> undo;
        Outcome outcome;
    };
    const Case cases[] = {
        {"a read-only configuration folder", [&] { return ::chmod(config, 0555) == 0; },
         [&] { ::chmod(config, 0755); }, Notified},
        {"a full disk",
         [&] {
             if (::mount("kestrel-test", config, "tmpfs", 0, "size=16k") != 0)
                 return false; // only root may mount
             WriteFile(prefsFile(), saved);
             QFile filler(QFile::decodeName(config + "/filler"));
             return filler.open(QIODevice::WriteOnly) && filler.write(QByteArray(1 << 16, 'f')) > 0;
         },
         [&] { ::umount(config); }, Notified},
        {"a file that is a link (dotfiles)",
         [&] {
             WriteFile(target, saved);
             return ::unlink(prefsFile()) == 0 && ::symlink(target, prefsFile()) == 0;
         },
         [] {}, WrittenThroughTheLink},
        {"an unreadable file", [&] { return ::chmod(target, 0) == 0; },
         [&] { ::chmod(target, 0600); }, ReportedAtStart},
    };
    const auto identity = [&] {
        const QFileInfo info(QFile::decodeName(prefsFile()));
        return std::tuple(info.size(), info.lastModified(), info.permissions());
    };
    for (const Case &c : cases) {
        if (!c.make()) {
            std::cout << "not tried here: " << c.what << '\n';
            continue;
        }
        const auto before = identity();
        const qsizetype notifiedBefore = notifications.received.size();
        QProcess *program = startProgram({}, c.outcome != ReportedAtStart);
        EXPECT_TRUE(c.outcome != ReportedAtStart || WaitFor([&] { return alertInFront(); }));
        // Quits as a logout does (SIGTERM), and must not make it wait.
        EXPECT_EQ(DesktopSession::stop(program), 0);
        if (c.outcome == Notified) {
            EXPECT_TRUE(WaitFor([&] { return notifications.received.size() > notifiedBefore; }))
                << c.what;
            EXPECT_TRUE(notifications.received.value(notifiedBefore)
                            .contains(QFile::decodeName(prefsFile())));
        }
        // Untouched, or (through the link) replaced by a complete new file.
        EXPECT_EQ(identity() == before, c.outcome != WrittenThroughTheLink) << c.what;
        const QByteArray folder =
            QFileInfo(QFile::decodeName(prefsFile())).canonicalPath().toUtf8();
        EXPECT_EQ(configEntries(folder).filter(QStringLiteral(".")).size(), 0)
            << "no temporary file left: " << c.what;
        c.undo();
    }
    EXPECT_EQ(QFileInfo(QFile::decodeName(prefsFile())).symLinkTarget(), QFile::decodeName(target));
    EXPECT_EQ(ReadFile(target), saved);
}

TEST_F(LifecycleTest, ADamagedSettingsFileCostsOneChoice) {
    EXPECT_EQ(DesktopSession::stop(startProgram()), 0);
    const QByteArray damaged = ReadFile(prefsFile()).chopped(5);
    WriteFile(prefsFile(), damaged);
    // "Quit", the default, leaves the file byte for byte.
    QProcess *program = startProgram({}, false);
    ASSERT_TRUE(WaitFor([&] { return alertInFront(); }));
    key(QStringLiteral("Return"));
    ASSERT_TRUE(program->waitForFinished(5000));
    EXPECT_EQ(ReadFile(prefsFile()), damaged);
    // "Start with Default Settings" keeps the damaged bytes under another name
    // and starts as the first time did, with one title.
    program = startProgram({}, false);
    ASSERT_TRUE(WaitFor([&] { return alertInFront(); }));
    key(QStringLiteral("s"));
    const QString title = QStringLiteral("^Kestrel Menu title$");
    ASSERT_TRUE(WaitFor([&] { return !windows(title).value(0).isEmpty(); }));
    EXPECT_EQ(windows(title).size(), 1);
    const QStringList kept = configEntries(env.configHome()).filter(QStringLiteral("(damaged "));
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(ReadFile(env.configHome() + '/' + QFile::encodeName(kept[0])), damaged);
    EXPECT_EQ(DesktopSession::stop(program), 0);
    EXPECT_TRUE(ReadFile(prefsFile()).startsWith("apse"));
}

TEST_F(LifecycleTest, OneCopyPerUserAndSettingsWhateverTheEnvironment) {
    const QByteArray link = env.root() + "/config-link";
    ASSERT_EQ(::symlink(env.configHome(), link), 0);
    struct Case {
        const char *what;
        mode_t runtimeMode;
        bool firstHasRuntime, secondHasRuntime;
        QByteArray secondConfig;
    };
    const Case cases[] = {
        {"a trailing slash", 0700, true, true, env.configHome() + '/'},
        {"the folder through a link", 0700, true, true, link},
        {"no run-time folder for the second", 0700, true, false, env.configHome()},
        {"no run-time folder for either", 0700, false, false, env.configHome()},
        {"an unwritable run-time folder", 0500, true, true, env.configHome()},
    };
    for (const Case &c : cases) {
        ::chmod(env.runtimeDir(), c.runtimeMode);
        QProcessEnvironment first = environment(), second = environment();
        if (!c.firstHasRuntime)
            first.remove(QStringLiteral("XDG_RUNTIME_DIR"));
        if (!c.secondHasRuntime)
            second.remove(QStringLiteral("XDG_RUNTIME_DIR"));
        second.insert(QStringLiteral("XDG_CONFIG_HOME"), QFile::decodeName(c.secondConfig));
        QProcess *running = startProgram(first);
        QProcess *another = startProgram(second, false);
        ASSERT_TRUE(another->waitForFinished(5000)) << c.what;
        EXPECT_EQ(another->exitCode(), 0);
        EXPECT_TRUE(another->readAllStandardError().contains("already running")) << c.what;
        EXPECT_EQ(DesktopSession::stop(running), 0);
    }
    ::chmod(env.runtimeDir(), 0700); // for the folder to go at the end, whoever runs the test
}

TEST_F(LifecycleTest, ALockThatCannotBeMadeIsReportedAndNothingRuns) {
    QProcessEnvironment environment = this->environment();
    environment.remove(QStringLiteral("XDG_RUNTIME_DIR"));
    WriteFile(env.root() + "/not-a-folder", "");
    environment.insert(QStringLiteral("XDG_CACHE_HOME"),
                       QFile::decodeName(env.root() + "/not-a-folder"));
    QProcess *program = startProgram(environment, false);
    ASSERT_TRUE(WaitFor([&] { return alertInFront(); }));
    key(QStringLiteral("Return"));
    ASSERT_TRUE(program->waitForFinished(5000));
    EXPECT_EQ(program->exitCode(), 0);
    EXPECT_TRUE(program->readAllStandardError().contains("cannot make the lock"));
    EXPECT_TRUE(configEntries(env.configHome()).isEmpty()) << "nothing ran";
}

TEST_F(LifecycleTest, AMountAndAnUnmountReachTheRunningProgram) {
    const QString point = QFile::decodeName(env.root() + "/mount point");
    ASSERT_TRUE(QDir().mkpath(point));
    // A user may not mount: then the program has mounts of its own, in a user
    // and mount namespace that the mount commands enter.
    const bool root = ::geteuid() == 0;
    QProcess *program = startProgram(
        {}, true, root ? QStringList() : QStringLiteral("unshare -U -r -m").split(u' '));
    const auto run = [&](QStringList command) {
        if (!root)
            command = QStringLiteral("nsenter --preserve-credentials -U -m -t %1")
                          .arg(program->processId())
                          .split(u' ') +
                      command;
        return QProcess::execute(command.takeFirst(), command);
    };
    QByteArray log;
    ASSERT_EQ(run(QStringLiteral("mount -t tmpfs -o size=64k kestrel-test").split(u' ') << point),
              0);
    EXPECT_TRUE(waitForLog(program, "volume mounted: " + QFile::encodeName(point), &log))
        << log.constData();
    ASSERT_EQ(run({QStringLiteral("umount"), point}), 0);
    EXPECT_TRUE(waitForLog(program, "volume unmounted: " + QFile::encodeName(point), &log))
        << log.constData();
    EXPECT_EQ(DesktopSession::stop(program), 0);
}

} // namespace

#include "lifecycle_test.moc"
