// A user's whole life with the program on a private desktop: the first start,
// quitting, and a damaged preferences file with its two ways out.
#include "core/desktopentry.h"
#include "tests/support/desktopsession.h"
#include "tests/support/tempenvironment.h"

#include <QDir>
#include <QFileInfo>
#include <gtest/gtest.h>

namespace {

class WholeLifeTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!session.failure().isEmpty())
            GTEST_SKIP() << session.failure().toStdString();
    }

    QByteArray xdotool(const QStringList &arguments) const {
        return session.run(QStringLiteral("xdotool"), arguments).trimmed();
    }
    QProcess *startProgram() {
        return session.start(QStringLiteral(KESTREL_PROGRAM), {},
                             session.environment(env.processEnvironment()));
    }
    // The titles shown: one line per window.
    QList<QByteArray> titles() const {
        return xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                        QStringLiteral("--name"), QStringLiteral("^Kestrel Menu title$")})
            .split('\n');
    }
    // An alert of the program's, in front, with the keyboard.
    bool alertInFront() const {
        const QList<QByteArray> alerts =
            xdotool({QStringLiteral("search"), QStringLiteral("--name"),
                     QStringLiteral("^Kestrel Menu$")})
                .split('\n');
        const QByteArray active = xdotool({QStringLiteral("getactivewindow")});
        return !active.isEmpty() && alerts.contains(active);
    }

    QByteArray prefsFile() const { return env.configHome() + "/Kestrel Menu Preferences"; }
    QStringList entries(const QByteArray &folder) const {
        return QDir(QFile::decodeName(folder))
            .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }

    // The desktop offers a file manager, so that the program has one to bring forward.
    static DesktopSession::Options WithFileManager() {
        DesktopSession::Options options;
        options.activatableNames = {QStringLiteral("org.freedesktop.FileManager1")};
        return options;
    }

    TempEnvironment env;
    DesktopSession session{WithFileManager()};
};

TEST_F(WholeLifeTest, FromTheFirstStartToADamagedFile) {
    // First start on an empty configuration: the menu folder, its links and the
    // login item that starts this very program.
    QProcess *program = startProgram();
    ASSERT_TRUE(WaitFor([&] { return !titles().value(0).isEmpty(); }, 15000))
        << program->readAllStandardError().constData();
    EXPECT_EQ(entries(env.configHome() + "/Kestrel Menu Items"),
              (QStringList{QStringLiteral("File System"), QStringLiteral("applications"),
                           QStringLiteral("home")}));
    const auto autostart = DesktopEntry::read(env.configHome() + "/autostart/kestrel-menu.desktop");
    ASSERT_TRUE(autostart.has_value());
    const QByteArray self = QFileInfo(QStringLiteral(KESTREL_PROGRAM)).canonicalFilePath().toUtf8();
    EXPECT_EQ(autostart->execProgram(), self);
    EXPECT_EQ(autostart->value(QStringLiteral("TryExec")), QFile::decodeName(self));
    EXPECT_EQ(DesktopSession::stop(program), 0);
    const QByteArray saved = ReadFile(prefsFile());
    ASSERT_TRUE(saved.startsWith("apse"));

    // A damaged file stops the start with an alert that names it. "Quit", the
    // default, leaves it byte for byte.
    const QByteArray damaged = saved.left(saved.size() - 5);
    WriteFile(prefsFile(), damaged);
    program = startProgram();
    ASSERT_TRUE(WaitFor([&] { return alertInFront(); }));
    EXPECT_TRUE(titles().value(0).isEmpty());
    xdotool({QStringLiteral("key"), QStringLiteral("Return")});
    ASSERT_TRUE(program->waitForFinished(10000));
    EXPECT_EQ(program->exitCode(), 0);
    EXPECT_EQ(ReadFile(prefsFile()), damaged);

    // "Start with Default Settings" keeps the damaged bytes under another name
    // and starts as the first time did, with one title.
    program = startProgram();
    ASSERT_TRUE(WaitFor([&] { return alertInFront(); }));
    xdotool({QStringLiteral("key"), QStringLiteral("s")});
    ASSERT_TRUE(WaitFor([&] { return !titles().value(0).isEmpty(); }, 15000));
    EXPECT_EQ(titles().size(), 1);
    const QStringList kept = entries(env.configHome()).filter(QStringLiteral("(damaged "));
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(ReadFile(env.configHome() + '/' + QFile::encodeName(kept[0])), damaged);
    EXPECT_EQ(DesktopSession::stop(program), 0);
    EXPECT_TRUE(ReadFile(prefsFile()).startsWith("apse"));
}

} // namespace
