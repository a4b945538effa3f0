// Finding programs by creator code: in the process table, among the desktop
// entries, and starting them.
#include "finder/applications.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakelauncher.h"
#include "platform/doubles/fakeprocesses.h"
#include "platform/procfsprocesses.h"
#include "tests/support/desktopsession.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"

#include <gtest/gtest.h>

#include <QProcess>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr OSType kKestrelMenu = FourCC("KesM");
constexpr OSType kAutomationEngine = FourCC("KM*E");

TEST(ApplicationLookupTest, RunningProgramsFirstThenInstalledOnesAreStarted) {
    TempEnvironment environment;
    Installed<platform::FakeProcesses, platform::Processes> processes;
    Installed<platform::FakeLauncher, platform::Launcher> launcher;
    Installed<platform::FakeAlerts, platform::Alerts> alerts;
    processes.table = {{11, {"autokey-gtk"}, false}, // a zombie or someone else's
                       {12, {"python3", "autokey-qt"}, true}};
    ProcessSerialNumber psn{99, 9};
    EXPECT_EQ(FindApplication(kAutomationEngine, &psn), noErr);
    EXPECT_EQ(psn, (ProcessSerialNumber{12, 0}));
    EXPECT_EQ(FindApplicationProcess(FourCC("ttxt"), &psn), procNotFound);
    EXPECT_EQ(psn, ProcessSerialNumber{});

    // Not running: the first entry whose program is really there is started.
    const QByteArray program = environment.root() + "/bin/kestrel-menu";
    WriteFile(program, "#!/bin/sh\n");
    ::chmod(program.constData(), 0755);
    const QByteArray home = environment.root() + "/home/.local/share/applications/";
    const QByteArray entry = "[Desktop Entry]\nType=Application\nName=M\n";
    WriteFile(home + "a-stale.desktop", entry + "Exec=/gone/kestrel-menu\n");
    WriteFile(home + "b-hidden.desktop", entry + "Hidden=true\nExec=" + program + "\n");
    WriteFile(home + "c.desktop", entry + "Exec=\"" + program + "\" %U\n");
    EXPECT_EQ(FindApplication(kKestrelMenu, &psn), noErr);
    EXPECT_EQ(launcher.launches,
              (QList<platform::FakeLauncher::Launch>{{"Entry", home + "c.desktop", {}}}));
    EXPECT_EQ(psn.pid, launcher.nextPid);
    EXPECT_TRUE(alerts.alerts.isEmpty());
    launcher.failure = fnfErr; // a failed launch is reported
    EXPECT_EQ(FindApplication(kKestrelMenu, &psn), fnfErr);
    EXPECT_EQ(alerts.alerts.size(), 1);
}

// The real process table, with programs and a zombie made here.
TEST(ProcessTableTest, ProgramsAndScriptsAreFoundByNameAndZombiesAreNot) {
    TempEnvironment environment;
    const QString copy = QFile::decodeName(environment.root() + "/kestrel-menu");
    const QByteArray script = environment.root() + "/autokey-gtk";
    WriteFile(script, "read line\n"); // waits on its input, with no child to outlive it
    ASSERT_TRUE(QFile::copy(QStringLiteral("/bin/sleep"), copy));
    QProcess menu, engine; // a program, and a script of an interpreter
    menu.start(copy, {QStringLiteral("30")});
    engine.start(QStringLiteral("/bin/sh"), {QFile::decodeName(script)});
    ASSERT_TRUE(menu.waitForStarted() && engine.waitForStarted());
    const pid_t zombie = ::fork();
    if (zombie == 0)
        ::_exit(0);

    platform::ProcFsProcesses table;
    ASSERT_TRUE(
        WaitFor([&] { return table.process(zombie) && !table.process(zombie)->isApplication; }));
    EXPECT_TRUE(table.process(menu.processId())->programNames.contains("kestrel-menu"));
    platform::ScopedService<platform::Processes> guard(&table);
    ProcessSerialNumber psn;
    EXPECT_EQ(FindApplicationProcess(kAutomationEngine, &psn), noErr);
    EXPECT_EQ(psn.pid, engine.processId());

    ::waitpid(zombie, nullptr, 0);
    EXPECT_FALSE(table.process(zombie));
    for (QProcess *process : {&menu, &engine})
        DesktopSession::stop(process, 2000);
}

} // namespace
