// A user's whole life with the program on a private desktop: the first start,
// a click, a choice reaching the file manager, quitting, starting again, and a
// damaged preferences file.
#include "core/desktopentry.h"
#include "tests/support/desktopsession.h"
#include "tests/support/tempenvironment.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QFileInfo>
#include <QUrl>
#include <gtest/gtest.h>

#include <csignal>

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

    QProcessEnvironment environment() const {
        QProcessEnvironment environment = session.environment(env.processEnvironment());
        environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("kestrel.*=true"));
        return environment;
    }

    // The desktop's file manager: the fake, owning its name on the session bus.
    void startFileManager() {
        session.start(QStringLiteral(KESTREL_FAKE_FILEMANAGER), {fileManagerLog}, environment());
        QDBusConnection bus =
            QDBusConnection::connectToBus(session.busAddress(), QStringLiteral("wholelife"));
        ASSERT_TRUE(WaitFor([&] {
            return bus.interface()->isServiceRegistered(
                QStringLiteral("org.freedesktop.FileManager1"));
        }));
        QDBusConnection::disconnectFromBus(QStringLiteral("wholelife"));
    }

    QProcess *startProgram() {
        return session.start(QStringLiteral(KESTREL_PROGRAM), {}, environment());
    }

    bool titleShown() const {
        const QByteArray title =
            xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                     QStringLiteral("--name"), QStringLiteral("^Kestrel Menu title$")});
        return !title.isEmpty();
    }

    QByteArray fileManagerCalls() const { return ReadFile(QFile::encodeName(fileManagerLog)); }

    // Opens the title's menu, types the first letter of an item and chooses
    // it with Space, holding `modifier` (if any) until the choice has arrived.
    void choose(const QString &letter, const QString &modifier, const QByteArray &expected) {
        const int before = fileManagerCalls().count('\n');
        xdotool({QStringLiteral("mousemove"), QStringLiteral("20"), QStringLiteral("10"),
                 QStringLiteral("click"), QStringLiteral("1")});
        // The menu takes the keyboard once it is up.
        ASSERT_TRUE(WaitFor([&] {
            return xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                            QStringLiteral("--class"), QStringLiteral("kestrel-menu")})
                       .split('\n')
                       .size() > 1;
        }));
        xdotool({QStringLiteral("key"), letter});
        if (!modifier.isEmpty())
            xdotool({QStringLiteral("keydown"), modifier});
        xdotool({QStringLiteral("key"), QStringLiteral("space")});
        const bool arrived = WaitFor([&] {
            const QByteArray calls = fileManagerCalls();
            return calls.count('\n') > before && calls.contains(expected);
        });
        if (!modifier.isEmpty())
            xdotool({QStringLiteral("keyup"), modifier});
        EXPECT_TRUE(arrived) << fileManagerCalls().constData();
    }

    QByteArray prefsFile() const { return env.configHome() + "/Kestrel Menu Preferences"; }
    QByteArray menuFolder() const { return env.configHome() + "/Kestrel Menu Items"; }

    static DesktopSession::Options Desktop() {
        DesktopSession::Options options;
        options.screen = QStringLiteral("1024x768x24");
        return options;
    }

    TempEnvironment env;
    DesktopSession session{Desktop()};
    QString fileManagerLog = QFile::decodeName(env.root() + "/filemanager.log");
};

TEST_F(WholeLifeTest, FromTheFirstStartToADamagedFile) {
    startFileManager();

    // First start on an empty configuration.
    QProcess *program = startProgram();
    ASSERT_TRUE(WaitFor([&] { return titleShown(); }, 15000))
        << program->readAllStandardError().constData();
    EXPECT_EQ(QDir(QFile::decodeName(menuFolder()))
                  .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name),
              (QStringList{QStringLiteral("Applications"), QStringLiteral("File System"),
                           QStringLiteral("home")}));
    const auto autostart = DesktopEntry::read(env.configHome() + "/autostart/kestrel-menu.desktop");
    ASSERT_TRUE(autostart.has_value());
    EXPECT_EQ(autostart->execProgram(),
              QFileInfo(QStringLiteral(KESTREL_PROGRAM)).canonicalFilePath().toUtf8());

    // A click shows the three links; choosing one reaches the file manager: the
    // home folder opens, and Ctrl reveals the applications folder.
    choose(QStringLiteral("h"), {}, "\"ShowFolders\"");
    EXPECT_TRUE(fileManagerCalls().contains(
        QUrl::fromLocalFile(QFile::decodeName(env.home())).toEncoded()));
    choose(QStringLiteral("a"), QStringLiteral("ctrl"), "file:///usr/share/applications");
    EXPECT_TRUE(fileManagerCalls().contains("\"ShowItems\""));

    // Quitting writes the preferences.
    ::kill(pid_t(program->processId()), SIGTERM);
    ASSERT_TRUE(program->waitForFinished(10000));
    EXPECT_EQ(program->exitCode(), 0);
    const QByteArray saved = ReadFile(prefsFile());
    ASSERT_TRUE(saved.startsWith("apse"));

    // The next start reads them back: the same title, no new links, the same bytes.
    program = startProgram();
    ASSERT_TRUE(WaitFor([&] { return titleShown(); }, 15000));
    EXPECT_EQ(QDir(QFile::decodeName(menuFolder()))
                  .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
                  .size(),
              3);
    EXPECT_EQ(DesktopSession::stop(program), 0);
    EXPECT_EQ(ReadFile(prefsFile()), saved);

    // A damaged file stops the start with an alert and stays as it was.
    const QByteArray damaged = saved.left(saved.size() - 5);
    WriteFile(prefsFile(), damaged);
    program = startProgram();
    ASSERT_TRUE(WaitFor([&] {
        const QList<QByteArray> alerts =
            xdotool({QStringLiteral("search"), QStringLiteral("--name"),
                     QStringLiteral("^Kestrel Menu$")})
                .split('\n');
        const QByteArray active = xdotool({QStringLiteral("getactivewindow")});
        return !active.isEmpty() && alerts.contains(active);
    }));
    EXPECT_FALSE(titleShown());
    xdotool({QStringLiteral("key"), QStringLiteral("Return")});
    ASSERT_TRUE(program->waitForFinished(10000));
    EXPECT_EQ(program->exitCode(), 0);
    EXPECT_EQ(ReadFile(prefsFile()), damaged);
}

} // namespace
