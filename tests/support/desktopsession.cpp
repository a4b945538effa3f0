#include "tests/support/desktopsession.h"

#include "tests/support/tempenvironment.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QThread>
#include <gtest/gtest.h>

#include <csignal>

namespace {

QByteArray ReadLineWithin(QProcess *process, int timeoutMs) {
    WaitFor([&] { return process->canReadLine() || process->state() == QProcess::NotRunning; },
            timeoutMs);
    return process->canReadLine() ? process->readLine().trimmed() : QByteArray();
}

} // namespace

// Looks at the condition every 40 ms or so: a look that starts a program (xprop,
// xdotool) costs the desktop under test time of its own.
bool WaitFor(const std::function<bool()> &condition, int timeoutMs) {
    QDeadlineTimer deadline(timeoutMs);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(20);
    }
    return true;
}

DesktopSession::DesktopSession(Options options) {
    setUp(options);
    if (!failure_.isEmpty())
        ADD_FAILURE() << failure_.toStdString();
}

void DesktopSession::setUp(const Options &options) {
    for (const char *tool : {"Xvfb", "dbus-daemon", "openbox", "xdotool", "xprop", "xwininfo",
                             "xrandr", "xsettingsd", "import"}) {
        if (QStandardPaths::findExecutable(QLatin1String(tool)).isEmpty()) {
            failure_ =
                QLatin1String(tool) + QStringLiteral(" is not installed (make test installs it)");
            return;
        }
    }
    const QProcessEnvironment base = QProcessEnvironment::systemEnvironment();

    // No reset when the last client leaves: the first look for the window
    // manager may be that client.
    QProcess *xvfb = start(
        QStringLiteral("Xvfb"),
        QStringLiteral("-displayfd 1 -noreset -screen 0 1280x800x24 -nolisten tcp").split(u' '),
        base);
    const QByteArray number = ReadLineWithin(xvfb, 15000);
    if (number.isEmpty()) {
        failure_ = QStringLiteral("Xvfb did not start");
        return;
    }
    display_ = u':' + QString::fromLatin1(number);

    QByteArray xml = "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration "
                     "1.0//EN\" \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
                     "<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen>";
    if (!options.busServiceDir.isEmpty())
        xml += "<servicedir>" + QFile::encodeName(options.busServiceDir) + "</servicedir>";
    if (!options.activatableNames.isEmpty()) {
        const QByteArray services = QFile::encodeName(dir_.filePath(QStringLiteral("services")));
        for (const QString &name : options.activatableNames)
            WriteFile(services + '/' + name.toUtf8() + ".service",
                      "[D-BUS Service]\nName=" + name.toUtf8() + "\nExec=/bin/false\n");
        xml += "<servicedir>" + services + "</servicedir>";
    }
    xml += "<policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
           "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>\n";
    const QString config = dir_.filePath(QStringLiteral("session.conf"));
    WriteFile(QFile::encodeName(config), xml);
    QProcess *bus = start(QStringLiteral("dbus-daemon"),
                          {QStringLiteral("--nofork"), QStringLiteral("--print-address=1"),
                           QStringLiteral("--config-file=") + config},
                          base);
    busAddress_ = QString::fromUtf8(ReadLineWithin(bus, 15000));
    if (busAddress_.isEmpty()) {
        failure_ = QStringLiteral("dbus-daemon did not start");
        return;
    }

    QProcess *openbox =
        start(QStringLiteral("openbox"), {QStringLiteral("--sm-disable")}, environment(base));
    const bool ready = WaitFor(
        [this] {
            return run(QStringLiteral("xprop"),
                       {QStringLiteral("-root"), QStringLiteral("_NET_SUPPORTING_WM_CHECK")})
                .contains("window id");
        },
        30000);
    if (!ready)
        failure_ = QStringLiteral("openbox did not take the screen: ") +
                   QString::fromLocal8Bit(openbox->readAllStandardOutput() +
                                          openbox->readAllStandardError());
}

DesktopSession::~DesktopSession() {
    // Newest first: programs, then the window manager, the bus and the X server.
    for (auto it = processes_.rbegin(); it != processes_.rend(); ++it)
        stop(it->get(), 3000);
}

QProcessEnvironment DesktopSession::environment(QProcessEnvironment base) const {
    base.insert(QStringLiteral("DISPLAY"), display_);
    base.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress_);
    base.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    base.remove(QStringLiteral("WAYLAND_DISPLAY"));
    return base;
}

QByteArray DesktopSession::run(const QString &program, const QStringList &arguments,
                               int timeoutMs) const {
    QProcess process;
    process.setProcessEnvironment(environment(QProcessEnvironment::systemEnvironment()));
    process.start(program, arguments);
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
    }
    return process.readAllStandardOutput();
}

QProcess *DesktopSession::start(const QString &program, const QStringList &arguments,
                                const QProcessEnvironment &environment) {
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(environment);
    process->setProcessChannelMode(QProcess::SeparateChannels);
    process->start(program, arguments);
    process->waitForStarted(10000);
    processes_.push_back(std::move(process));
    return processes_.back().get();
}

int DesktopSession::stop(QProcess *process, int graceMs) {
    if (process->state() != QProcess::NotRunning) {
        ::kill(pid_t(process->processId()), SIGTERM);
        if (!process->waitForFinished(graceMs)) {
            process->kill();
            process->waitForFinished(5000);
        }
    }
    return process->exitStatus() == QProcess::NormalExit ? process->exitCode() : -1;
}
