// Finding programs by creator code: in the process table, among the desktop
// entries, and starting them.
#include "finder/applications.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakelauncher.h"
#include "platform/doubles/fakeprocesses.h"
#include "platform/procfsprocesses.h"
#include "platform/service.h"
#include "tests/support/desktopsession.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using platform::RunningProcess;

namespace {

constexpr OSType kKestrelMenu = FourCC("KesM");
constexpr OSType kAutomationEngine = FourCC("KM*E");

TEST(ProgramNamesTest, ScriptsGoByTheirOwnName) {
    EXPECT_EQ(platform::ProgramNames("/usr/bin/python3.11",
                                     {"/usr/bin/python3", "-O", "/usr/bin/autokey-gtk", "-v"}),
              (QList<QByteArray>{"python3.11", "python3", "autokey-gtk"}));
    EXPECT_EQ(platform::ProgramNames("/opt/k/kestrel-menu", {"kestrel-menu"}),
              QList<QByteArray>{"kestrel-menu"});
    // Not an interpreter, though its name starts like one.
    EXPECT_EQ(platform::ProgramNames("/usr/bin/shellcheck", {"shellcheck", "script"}),
              QList<QByteArray>{"shellcheck"});
    EXPECT_EQ(platform::ProgramNames("", {}), QList<QByteArray>{});
}

class ApplicationLookupTest : public ::testing::Test {
protected:
    void SetUp() override {
        savedDataHome = qgetenv("XDG_DATA_HOME");
        savedDataDirs = qgetenv("XDG_DATA_DIRS");
        qputenv("XDG_DATA_HOME", environment.root() + "/data-home");
        qputenv("XDG_DATA_DIRS", environment.root() + "/data");
    }
    void TearDown() override {
        qputenv("XDG_DATA_HOME", savedDataHome);
        qputenv("XDG_DATA_DIRS", savedDataDirs);
    }
    QByteArray MakeProgram(const QByteArray &name) {
        const QByteArray path = environment.root() + "/bin/" + name;
        WriteFile(path, "#!/bin/sh\n");
        EXPECT_EQ(::chmod(path.constData(), 0755), 0);
        return path;
    }

    TempEnvironment environment;
    QByteArray savedDataHome, savedDataDirs;
    Installed<platform::FakeProcesses, platform::Processes> processes;
    Installed<platform::FakeLauncher, platform::Launcher> launcher;
    Installed<platform::FakeAlerts, platform::Alerts> alerts;
};

TEST_F(ApplicationLookupTest, RunningApplicationsAreFoundByCreator) {
    processes.table = {{10, {"bash"}, true},
                       {11, {"autokey-gtk"}, false}, // a zombie or someone else's
                       {12, {"python3", "autokey-qt"}, true},
                       {13, {"kestrel-menu"}, true}};
    ProcessSerialNumber psn{99, 9};
    EXPECT_EQ(FindApplicationProcess(kAutomationEngine, &psn), noErr);
    EXPECT_EQ(psn, (ProcessSerialNumber{12, 0}));
    EXPECT_EQ(FindApplicationProcess(kKestrelMenu, &psn), noErr);
    EXPECT_EQ(psn.pid, 13);
    EXPECT_EQ(FindApplicationProcess(FourCC("ttxt"), &psn), procNotFound);
    EXPECT_EQ(psn, ProcessSerialNumber{});

    // Already running, even with no entry on disk: nothing is started.
    EXPECT_EQ(FindApplication(kKestrelMenu, &psn), noErr);
    EXPECT_EQ(psn.pid, 13);
    EXPECT_TRUE(launcher.launches.isEmpty());
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

TEST_F(ApplicationLookupTest, EntriesAreFoundOnlyWhenTheirProgramIsThere) {
    const QByteArray program = MakeProgram("kestrel-menu");
    const QByteArray home = environment.root() + "/data-home/applications/";
    const QByteArray system = environment.root() + "/data/applications/";
    WriteFile(home + "a-stale.desktop",
              "[Desktop Entry]\nType=Application\nName=Old\nExec=/gone/kestrel-menu\n");
    WriteFile(home + "b-hidden.desktop",
              "[Desktop Entry]\nType=Application\nName=H\nHidden=true\nExec=" + program + "\n");
    WriteFile(home + "c-other.desktop",
              "[Desktop Entry]\nType=Application\nName=Other\nExec=" + MakeProgram("other") + "\n");
    WriteFile(system + "kestrel.desktop",
              "[Desktop Entry]\nType=Application\nName=Menu\nExec=\"" + program + "\" %U\n");

    FSSpec app;
    EXPECT_EQ(FindApplicationFile(kKestrelMenu, &app), noErr);
    EXPECT_EQ(app.path, system + "kestrel.desktop");
    FSSpec untouched{"/unchanged"};
    EXPECT_EQ(FindApplicationFile(kAutomationEngine, &untouched), nsvErr);
    EXPECT_EQ(untouched.path, "/unchanged");

    // Not running: the entry found is started.
    ProcessSerialNumber psn;
    EXPECT_EQ(FindApplication(kKestrelMenu, &psn), noErr);
    EXPECT_EQ(launcher.launches,
              (QList<platform::FakeLauncher::Launch>{{"Entry", system + "kestrel.desktop", {}}}));
    EXPECT_EQ(psn.pid, launcher.nextPid);
    EXPECT_EQ(FindApplication(kAutomationEngine, &psn), nsvErr);
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

TEST_F(ApplicationLookupTest, AFailedLaunchIsReported) {
    launcher.failure = fnfErr;
    const FSSpec app{MakeProgram("kestrel-menu")};
    ProcessSerialNumber psn{5, 5};
    EXPECT_EQ(OpenApplicationFile(&app, &psn), fnfErr);
    EXPECT_EQ(psn, (ProcessSerialNumber{5, 5}));
    EXPECT_EQ(launcher.launches.first().what, "Program");
    ASSERT_EQ(alerts.alerts.size(), 1);
    EXPECT_EQ(alerts.alerts.first().status, -43);
}

// The real process table, with programs started here.
class ProcessTableTest : public ::testing::Test {
protected:
    void TearDown() override {
        for (QProcess *process : started) {
            DesktopSession::stop(process, 2000);
            delete process;
        }
    }
    QProcess *Start(const QString &program, const QStringList &arguments) {
        auto *process = new QProcess;
        started.append(process);
        process->start(program, arguments);
        EXPECT_TRUE(process->waitForStarted(5000));
        return process;
    }
    std::optional<RunningProcess> Find(std::int64_t pid) {
        for (const RunningProcess &process : table.running()) {
            if (process.pid == pid)
                return process;
        }
        return std::nullopt;
    }

    TempEnvironment environment;
    platform::ProcFsProcesses table;
    QList<QProcess *> started;
};

TEST_F(ProcessTableTest, ProgramsAndScriptsAreFoundByName) {
    const QByteArray copy = environment.root() + "/kestrel-menu";
    ASSERT_TRUE(QFile::copy(QStringLiteral("/bin/sleep"), QFile::decodeName(copy)));
    QProcess *menu = Start(QFile::decodeName(copy), {QStringLiteral("30")});
    const QByteArray script = environment.root() + "/autokey-gtk";
    WriteFile(script, "while true; do sleep 1; done\n");
    QProcess *engine = Start(QStringLiteral("/bin/sh"), {QFile::decodeName(script)});

    const auto menuEntry = Find(menu->processId());
    ASSERT_TRUE(menuEntry);
    EXPECT_TRUE(menuEntry->isApplication);
    EXPECT_TRUE(menuEntry->programNames.contains("kestrel-menu"));
    const auto engineEntry = Find(engine->processId());
    ASSERT_TRUE(engineEntry);
    EXPECT_TRUE(engineEntry->programNames.contains("autokey-gtk"));

    platform::ScopedService<platform::Processes> guard(&table);
    ProcessSerialNumber psn;
    EXPECT_EQ(FindApplicationProcess(kAutomationEngine, &psn), noErr);
    EXPECT_EQ(psn.pid, engine->processId());
}

TEST_F(ProcessTableTest, ZombiesAreNotApplications) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0)
        ::_exit(0);
    ASSERT_TRUE(WaitFor(
        [&] {
            const auto entry = table.process(child);
            return entry && !entry->isApplication;
        },
        5000));
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_FALSE(table.process(child));
    EXPECT_TRUE(table.process(::getpid())->isApplication);
}

} // namespace
