// The whole program under a private desktop: start-up, quitting, a second
// copy and mount events. (A damaged preferences file is part of the whole-life
// test.)
#include "tests/support/desktopsession.h"
#include "tests/support/tempenvironment.h"

#include <QDir>
#include <QFileInfo>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/mount.h>

namespace {

class LifecycleTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!session.failure().isEmpty())
            GTEST_SKIP() << session.failure().toStdString();
    }

    QProcess *startProgram() {
        QProcessEnvironment environment = session.environment(env.processEnvironment());
        environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("kestrel.*=true"));
        QProcess *program = session.start(QStringLiteral(KESTREL_PROGRAM), {}, environment);
        return program;
    }

    // Collects what the program wrote to standard error until `text` shows.
    bool waitForLog(QProcess *program, const QByteArray &text, int timeoutMs = 15000) {
        return WaitFor(
            [&] {
                log_ += program->readAllStandardError();
                return log_.contains(text);
            },
            timeoutMs);
    }

    QByteArray prefsFile() const { return env.configHome() + "/Kestrel Menu Preferences"; }
    QByteArray menuFolder() const { return env.configHome() + "/Kestrel Menu Items"; }
    QStringList menuEntries() const {
        return QDir(QFile::decodeName(menuFolder()))
            .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }

    // The desktop offers a file manager, as desktops do, so that the program has
    // one to bring forward when it starts.
    static DesktopSession::Options WithFileManager() {
        DesktopSession::Options options;
        options.activatableNames = {QStringLiteral("org.freedesktop.FileManager1")};
        return options;
    }

    TempEnvironment env;
    DesktopSession session{WithFileManager()};
    QByteArray log_;
};

TEST_F(LifecycleTest, EachQuitSignalEndsTheRunCleanlyAndTheSettingsComeBack) {
    QByteArray savedBefore;
    for (int signal : {SIGTERM, SIGINT, SIGHUP}) {
        log_.clear();
        QProcess *program = startProgram();
        ASSERT_TRUE(waitForLog(program, "running")) << log_.constData();
        ::kill(pid_t(program->processId()), signal);
        ASSERT_TRUE(program->waitForFinished(10000)) << "signal " << signal;
        EXPECT_EQ(program->exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(program->exitCode(), 0);

        // The first run made the defaults; later runs read them back, so
        // neither the menu folder nor the saved bytes change.
        EXPECT_EQ(menuEntries(),
                  (QStringList{QStringLiteral("Applications"), QStringLiteral("File System"),
                               QStringLiteral("home")}));
        const QByteArray saved = ReadFile(prefsFile());
        ASSERT_FALSE(saved.isEmpty());
        EXPECT_TRUE(saved.startsWith("apse")) << "signal " << signal;
        EXPECT_TRUE(saved.endsWith(QByteArray("end!\0\0\0\0", 8)));
        if (!savedBefore.isEmpty()) {
            EXPECT_EQ(saved, savedBefore) << "signal " << signal;
        }
        savedBefore = saved;
    }
    EXPECT_TRUE(
        QFileInfo::exists(QFile::decodeName(env.configHome() + "/autostart/kestrel-menu.desktop")));
}

TEST_F(LifecycleTest, ASecondCopyLeavesAtOnceAndTouchesNothing) {
    QProcess *first = startProgram();
    ASSERT_TRUE(waitForLog(first, "running")) << log_.constData();
    const QStringList entriesBefore = menuEntries();
    const QDateTime folderTime = QFileInfo(QFile::decodeName(menuFolder())).lastModified();

    QProcess *second = startProgram();
    ASSERT_TRUE(second->waitForFinished(5000));
    EXPECT_EQ(second->exitCode(), 0);
    const QByteArray message = second->readAllStandardError();
    EXPECT_TRUE(message.contains("already running")) << message.constData();
    EXPECT_EQ(message.count('\n'), 1) << message.constData();
    EXPECT_FALSE(QFileInfo::exists(QFile::decodeName(prefsFile())))
        << "only the first copy writes, at its own quit";
    EXPECT_EQ(menuEntries(), entriesBefore);
    EXPECT_EQ(QFileInfo(QFile::decodeName(menuFolder())).lastModified(), folderTime);

    EXPECT_EQ(DesktopSession::stop(first), 0);
    EXPECT_TRUE(QFileInfo::exists(QFile::decodeName(prefsFile())));
}

TEST_F(LifecycleTest, AMountAndAnUnmountReachTheRunningProgram) {
    const QByteArray point = env.root() + "/mount point";
    ASSERT_TRUE(QDir().mkpath(QFile::decodeName(point)));
    // Mounting needs the right to; without it there is nothing to observe.
    if (::mount("kestrel-test", point.constData(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "cannot mount a tmpfs here (" << std::strerror(errno)
                     << "): run as root to check mount events";
    ::umount(point.constData());

    QProcess *program = startProgram();
    ASSERT_TRUE(waitForLog(program, "running")) << log_.constData();
    ASSERT_EQ(::mount("kestrel-test", point.constData(), "tmpfs", 0, "size=64k"), 0);
    EXPECT_TRUE(waitForLog(program, "volume mounted: " + point)) << log_.constData();
    ASSERT_EQ(::umount(point.constData()), 0);
    EXPECT_TRUE(waitForLog(program, "volume unmounted: " + point)) << log_.constData();
    EXPECT_EQ(DesktopSession::stop(program), 0);
}

} // namespace
