// A private desktop for end-to-end tests: Xvfb, openbox and a session bus of its
// own. Every process it starts is stopped by its id when the session ends. A
// tool of the tier that is missing, or a part that does not start, fails the
// test that asked for the desktop: `make test` installs them all.
#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QTemporaryDir>

#include <memory>
#include <vector>

class DesktopSession {
public:
    struct Options {
        QString busServiceDir; // activatable services of the private bus, if any
        // Names the bus offers as activatable (with a program that never starts),
        // as a desktop offers its file manager.
        QStringList activatableNames;
    };
    explicit DesktopSession(Options options = {});
    ~DesktopSession();

    // Empty when everything started; otherwise why it did not (a failure already).
    QString failure() const { return failure_; }
    QString busAddress() const { return busAddress_; }

    // `base` with this session's display and bus, and Qt on its X11 platform.
    QProcessEnvironment environment(QProcessEnvironment base) const;

    // Runs a helper program (xdotool, xprop, ...) on this display and returns its output.
    QByteArray run(const QString &program, const QStringList &arguments,
                   int timeoutMs = 10000) const;

    // Starts a program on this display; the session stops it at the end.
    QProcess *start(const QString &program, const QStringList &arguments,
                    const QProcessEnvironment &environment);
    // Stops a process politely, then by force; returns its exit code.
    static int stop(QProcess *process, int graceMs = 5000);

private:
    void setUp(const Options &options);

    QTemporaryDir dir_;
    std::vector<std::unique_ptr<QProcess>> processes_;
    QString display_;
    QString busAddress_;
    QString failure_;
};

// Whether `condition` came true within `timeoutMs`, the event loop running meanwhile.
bool WaitFor(const std::function<bool()> &condition, int timeoutMs = 10000);
