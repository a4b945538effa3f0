// The real program on a private desktop (Xvfb, openbox, a session bus that
// offers a file manager, as desktops do), and what the title tests ask of the
// display: windows' places, the screen's pixels, the program's log.
#pragma once

#include "tests/support/desktopsession.h"
#include "tests/support/tempenvironment.h"

#include <QImage>
#include <QRegularExpression>
#include <QStandardPaths>
#include <gtest/gtest.h>

struct WindowInfo {
    QRect geometry;
    bool viewable = false;
    bool overrideRedirect = false;
};

class ProgramOnDesktop : public ::testing::Test {
protected:
    explicit ProgramOnDesktop(DesktopSession::Options options = {})
        : session([&] {
              // Offered, never started: the program finds a file manager at start.
              options.activatableNames = {QStringLiteral("org.freedesktop.FileManager1")};
              return options;
          }()) {}

    void SetUp() override {
        if (!session.failure().isEmpty())
            GTEST_SKIP() << session.failure().toStdString();
        if (QStandardPaths::findExecutable(QStringLiteral("import")).isEmpty())
            GTEST_SKIP() << "ImageMagick's import is not installed";
    }

    QProcessEnvironment environment() const {
        QProcessEnvironment environment = session.environment(env.processEnvironment());
        environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("kestrel.*=true"));
        return environment;
    }

    // Starts the program and waits until its title shows and it runs.
    void startProgram() {
        program = session.start(QStringLiteral(KESTREL_PROGRAM), {}, environment());
        ASSERT_TRUE(WaitFor(
            [&] {
                title = xdo(QStringLiteral("search --name ^Kestrel.Menu.title$")).trimmed();
                return !title.isEmpty() && info(title).viewable && log().contains("running");
            },
            15000))
            << log().constData();
    }

    const QByteArray &log() {
        if (program != nullptr)
            log_ += program->readAllStandardError();
        return log_;
    }

    // xdotool with its arguments as one line ("mousemove 20 10 click 1").
    QByteArray xdo(const QString &arguments) const {
        return session.run(QStringLiteral("xdotool"), arguments.split(u' '));
    }

    // Moves the pointer as a mouse does, so that the display reports it as
    // input; xdotool's own "mousemove" warps the pointer, which is not input.
    void moveTo(int x, int y) const {
        xdo(QStringLiteral("mousemove %1 %2 mousemove_relative -- -1 0").arg(x + 1).arg(y));
    }

    // The title's place on the screen once it has settled: the same in two shots.
    QImage settledTitle() const {
        QImage shot;
        WaitFor([&] {
            const QImage now = screen(QRect(0, 0, 45, 22));
            return std::exchange(shot, now) == now;
        });
        return shot;
    }

    WindowInfo info(const QByteArray &id) const {
        const QString text = QString::fromUtf8(session.run(
            QStringLiteral("xwininfo"), {QStringLiteral("-id"), QString::fromLatin1(id)}));
        auto number = [&](const char *label) {
            const QRegularExpression pattern(QLatin1String(label) + QStringLiteral(":\\s+(-?\\d+)"));
            return pattern.match(text).captured(1).toInt();
        };
        return {QRect(number("Absolute upper-left X"), number("Absolute upper-left Y"),
                      number("Width"), number("Height")),
                text.contains(QLatin1String("Map State: IsViewable")),
                text.contains(QLatin1String("Override Redirect State: yes"))};
    }

    // What the screen shows in `area`, from the X server itself.
    QImage screen(const QRect &area) const {
        const QString crop = QStringLiteral("%1x%2+%3+%4")
                                 .arg(area.width())
                                 .arg(area.height())
                                 .arg(area.x())
                                 .arg(area.y());
        return QImage::fromData(session.run(QStringLiteral("import"),
                                            {QStringLiteral("-window"), QStringLiteral("root"),
                                             QStringLiteral("-crop"), crop,
                                             QStringLiteral("png:-")}))
            .convertToFormat(QImage::Format_RGB32);
    }

    TempEnvironment env;
    DesktopSession session;
    QProcess *program = nullptr;
    QByteArray title;
    QByteArray log_;
};
