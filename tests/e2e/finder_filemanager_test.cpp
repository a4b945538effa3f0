// The file manager requests on a real session bus, answered by a fake file
// manager that records every call; the folder application and the launcher
// through GIO, with the fake standing in for every application.
#include "finder/finderevents.h"
#include "platform/dbusfilemanager.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakefrontwindow.h"
#include "platform/doubles/fakelauncher.h"
#include "platform/doubles/fakeprocesses.h"
#include "platform/giolauncher.h"
#include "platform/service.h"
#include "tests/support/desktopsession.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString kFakeProgram = QStringLiteral(KESTREL_FAKE_FILEMANAGER);

struct Record {
    QString method;
    QList<QByteArray> paths; // the URIs, decoded
    QStringList uris;
    qint64 pid = 0;
};

QByteArray PathFromUri(const QString &uri) {
    const QByteArray ascii = uri.toLatin1();
    EXPECT_TRUE(ascii.startsWith("file://")) << qPrintable(uri);
    return QByteArray::fromPercentEncoding(ascii.mid(7));
}

QList<Record> ReadRecords(const QString &log) {
    QList<Record> records;
    QFile file(log);
    if (!file.open(QIODevice::ReadOnly))
        return records;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.isEmpty())
            continue;
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        Record record;
        record.method = object.value(QStringLiteral("method")).toString();
        record.pid = object.value(QStringLiteral("pid")).toInteger();
        for (const QJsonValue &uri : object.value(QStringLiteral("uris")).toArray()) {
            record.uris.append(uri.toString());
            // Applications may be handed paths rather than addresses.
            if (uri.toString().startsWith(QStringLiteral("file://")))
                record.paths.append(PathFromUri(uri.toString()));
            else if (uri.toString().startsWith(u'/'))
                record.paths.append(QFile::encodeName(uri.toString()));
        }
        records.append(record);
    }
    return records;
}

// The applications the desktop knows, for the whole test program: GLib reads
// the data folders once, so they are set before anything asks it.
class DesktopData : public ::testing::Environment {
public:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        root = QFile::encodeName(dir.path());
        qputenv("XDG_DATA_HOME", root + "/home-data");
        qputenv("XDG_DATA_DIRS", root + "/data");
        // GIO announces launches on the session bus; there is none for it here.
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + root + "/no-bus");
        const QByteArray fake = QFile::encodeName(kFakeProgram);
        const QByteArray apps = root + "/data/applications/";
        WriteFile(apps + "kestrel-folders.desktop",
                  "[Desktop Entry]\nType=Application\nName=Folders\nExec=" + fake + " --program " +
                      log("folders") + " %U\nMimeType=inode/directory;\n");
        WriteFile(apps + "kestrel-viewer.desktop",
                  "[Desktop Entry]\nType=Application\nName=Viewer\nExec=" + fake + " --program " +
                      log("viewer") +
                      " %F\nMimeType=text/x-kestrel-document;application/x-kestrel-both;\n");
        WriteFile(apps + "kestrel-console.desktop",
                  "[Desktop Entry]\nType=Application\nName=Console Editor\nTerminal=true\nExec=" +
                      fake + " --program " + log("console") +
                      " %F\nMimeType=application/x-kestrel-console;application/x-kestrel-both;\n");
        WriteFile(apps + "mimeapps.list", "[Default Applications]\n"
                                          "inode/directory=kestrel-folders.desktop\n"
                                          "application/x-kestrel-both=kestrel-console.desktop\n");
        QByteArray types = "<?xml version=\"1.0\"?>\n<mime-info "
                           "xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n";
        for (const char *type :
             {"text/x-kestrel-document:kdoc", "application/x-kestrel-console:kcon",
              "application/x-kestrel-both:kboth"}) {
            const QList<QByteArray> parts = QByteArray(type).split(':');
            types += "<mime-type type=\"" + parts[0] + "\"><glob pattern=\"*." + parts[1] +
                     "\"/></mime-type>\n";
        }
        WriteFile(root + "/data/mime/packages/kestrel.xml", types + "</mime-info>\n");
        // GIO reads types and handlers from the caches these tools write.
        for (const auto &[tool, folder] :
             {std::pair{"update-mime-database", "/data/mime"},
              std::pair{"update-desktop-database", "/data/applications"}}) {
            QProcess update;
            update.start(QString::fromLatin1(tool), {QFile::decodeName(root + folder)});
            ASSERT_TRUE(update.waitForFinished(30000)) << tool;
            ASSERT_EQ(update.exitCode(), 0) << update.readAllStandardError().constData();
        }
    }
    QByteArray log(const char *name) const { return root + "/" + name + ".log"; }

    QTemporaryDir dir;
    QByteArray root;
};

DesktopData *desktopData =
    static_cast<DesktopData *>(::testing::AddGlobalTestEnvironment(new DesktopData));

// Waits for the log to hold `count` records.
QList<Record> WaitForRecords(const QString &log, qsizetype count) {
    WaitFor([&] { return ReadRecords(log).size() >= count; }, 10000);
    return ReadRecords(log);
}

class FileManagerSession : public ::testing::Test {
protected:
    void StartSession(DesktopSession::Options options, bool withFileManager) {
        options.windowManager = false;
        session = std::make_unique<DesktopSession>(options);
        ASSERT_TRUE(session->failure().isEmpty()) << qPrintable(session->failure());
        if (withFileManager) {
            session->start(kFakeProgram, {serviceLog},
                           session->environment(QProcessEnvironment::systemEnvironment()));
            const QList<Record> started = WaitForRecords(serviceLog, 1);
            ASSERT_EQ(started.size(), 1);
            ASSERT_EQ(started.first().method, QStringLiteral("Started"));
            fakePid = started.first().pid;
        }
        bus = std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(
            session->busAddress(), QStringLiteral("finder-test-%1").arg(++connections)));
        ASSERT_TRUE(bus->isConnected());
        fileManager = std::make_unique<platform::DBusFileManager>(*bus);
        fileManagerGuard =
            std::make_unique<platform::ScopedService<platform::FileManager>>(fileManager.get());
        root = environment.root() + "/items";
        ASSERT_TRUE(QDir().mkpath(QFile::decodeName(root)));
    }

    void TearDown() override {
        // A file manager the bus started is this test's to stop.
        for (const Record &record : ReadRecords(serviceLog)) {
            if (record.method == QStringLiteral("Started") && record.pid != fakePid)
                ::kill(pid_t(record.pid), SIGTERM);
        }
        // Names that are not UTF-8 are beyond QTemporaryDir's clean-up.
        for (auto it = made.rbegin(); it != made.rend(); ++it)
            ::remove(it->constData());
        fileManagerGuard.reset();
        fileManager.reset();
        if (bus)
            QDBusConnection::disconnectFromBus(bus->name());
        bus.reset();
        session.reset();
    }

    QByteArray MakeFolder(const QByteArray &name) {
        const QByteArray path = root + "/" + name;
        EXPECT_EQ(::mkdir(path.constData(), 0755), 0) << path.constData();
        made.append(path);
        return path;
    }
    QByteArray MakeFile(const QByteArray &name) {
        const QByteArray path = root + "/" + name;
        WriteFile(path, "contents\n");
        made.append(path);
        return path;
    }
    QList<Record> ServiceCalls(qsizetype count) {
        QList<Record> records = WaitForRecords(serviceLog, count + 1);
        records.removeFirst(); // "Started"
        return records;
    }

    TempEnvironment environment;
    QTemporaryDir logs;
    QString serviceLog = logs.filePath(QStringLiteral("service.log"));
    std::unique_ptr<DesktopSession> session;
    std::unique_ptr<QDBusConnection> bus;
    std::unique_ptr<platform::DBusFileManager> fileManager;
    std::unique_ptr<platform::ScopedService<platform::FileManager>> fileManagerGuard;
    qint64 fakePid = 0;
    QByteArray root;
    QList<QByteArray> made;
    inline static int connections = 0;

    Installed<platform::FakeLauncher, platform::Launcher> launcher;
    Installed<platform::FakeFrontWindow, platform::FrontWindow> front;
    Installed<platform::FakeAlerts, platform::Alerts> alerts;
    Installed<platform::FakeProcesses, platform::Processes> processes;
};

TEST_F(FileManagerSession, OpenRevealAndGetInfoSendTheExactRequests) {
    StartSession({}, true);
    const QByteArray folder = MakeFolder("Folder");
    const QByteArray file = MakeFile("file.txt");
    const QByteArray bundle = MakeFolder("Tool.AppDir");
    WriteFile(bundle + "/AppRun", "#!/bin/sh\n");
    ASSERT_EQ(::chmod((bundle + "/AppRun").constData(), 0755), 0);
    const QByteArray link = root + "/Folder link";
    ASSERT_EQ(::symlink(folder.constData(), link.constData()), 0);

    const auto Do = [](FinderAction action, const QByteArray &path) {
        const FSSpec spec{path};
        return DoFinderFile(action, &spec, nullptr);
    };
    EXPECT_EQ(Do(kFinderOpen, folder), noErr);
    EXPECT_EQ(Do(kFinderOpen, link), noErr);
    EXPECT_EQ(Do(kFinderReveal, file), noErr);
    EXPECT_EQ(Do(kFinderGetInfo, folder), noErr);
    EXPECT_EQ(Do(kFinderGetInfo, file), noErr);
    EXPECT_EQ(Do(kFinderReveal, bundle), noErr);
    EXPECT_EQ(Do(kFinderGetInfo, bundle), noErr);
    EXPECT_EQ(Do(kFinderOpen, bundle), noErr); // started, not shown
    EXPECT_EQ(Do(kFinderOpen, file), noErr);   // its own application

    const QList<Record> calls = ServiceCalls(7);
    ASSERT_EQ(calls.size(), 7);
    const QList<std::pair<QString, QByteArray>> expected{
        {QStringLiteral("ShowFolders"), folder},
        {QStringLiteral("ShowFolders"), folder},
        {QStringLiteral("ShowItems"), file},
        {QStringLiteral("ShowItemProperties"), folder},
        {QStringLiteral("ShowItemProperties"), file},
        {QStringLiteral("ShowItems"), bundle},
        {QStringLiteral("ShowItemProperties"), bundle}};
    for (qsizetype i = 0; i < calls.size(); ++i) {
        EXPECT_EQ(calls[i].method, expected[i].first) << i;
        EXPECT_EQ(calls[i].paths, QList<QByteArray>{expected[i].second}) << i;
    }
    EXPECT_EQ(launcher.launches, (QList<platform::FakeLauncher::Launch>{
                                     {"Program", bundle + "/AppRun", {}}, {"Default", file, {}}}));
    // The bus names the service's process: two folders opened, two reveals
    // and three information windows brought it forward.
    EXPECT_EQ(front.broughtToFront.size(), 7);
    for (const ProcessSerialNumber &psn : front.broughtToFront)
        EXPECT_EQ(psn.pid, fakePid);
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

TEST_F(FileManagerSession, OddNamesArriveByteForByte) {
    StartSession({}, true);
    const QList<QByteArray> names{"with space",        "hash#tag",           "100% sure",
                                  "line\nbreak",       "\xff\xfe not UTF-8", "caf\xc3\xa9 ?&=+",
                                  QByteArray(255, 'n')};
    for (const QByteArray &name : names) {
        const FSSpec spec{MakeFile(name)};
        EXPECT_EQ(DoFinderFile(kFinderReveal, &spec, nullptr), noErr);
    }
    const FSSpec folder{MakeFolder("folder #%\n\x80")};
    EXPECT_EQ(DoFinderFile(kFinderOpen, &folder, nullptr), noErr);

    const QList<Record> calls = ServiceCalls(names.size() + 1);
    ASSERT_EQ(calls.size(), names.size() + 1);
    for (qsizetype i = 0; i < names.size(); ++i) {
        EXPECT_EQ(calls[i].paths, QList<QByteArray>{root + "/" + names[i]}) << i;
        // Nothing that a URI reader would take for a fragment or a query.
        EXPECT_FALSE(calls[i].uris.first().contains(u'#'));
        EXPECT_FALSE(calls[i].uris.first().contains(u'?'));
    }
    EXPECT_EQ(calls.last().method, QStringLiteral("ShowFolders"));
    EXPECT_EQ(calls.last().paths, QList<QByteArray>{folder.path});
}

TEST_F(FileManagerSession, AnActivatableServiceIsStartedByTheBus) {
    QTemporaryDir services;
    WriteFile(QFile::encodeName(
                  services.filePath(QStringLiteral("org.freedesktop.FileManager1.service"))),
              "[D-BUS Service]\nName=org.freedesktop.FileManager1\nExec=" +
                  QFile::encodeName(kFakeProgram) + " " + QFile::encodeName(serviceLog) + "\n");
    DesktopSession::Options options;
    options.busServiceDir = services.path();
    StartSession(options, false);
    EXPECT_TRUE(fileManager->serviceExists());
    EXPECT_EQ(fileManager->serviceProcess(), 0);

    const FSSpec file{MakeFile("report.pdf")};
    EXPECT_EQ(DoFinderFile(kFinderReveal, &file, nullptr), noErr);
    const QList<Record> calls = ServiceCalls(1);
    ASSERT_EQ(calls.size(), 1);
    EXPECT_EQ(calls.first().method, QStringLiteral("ShowItems"));
    EXPECT_EQ(calls.first().paths, QList<QByteArray>{file.path});
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

TEST_F(FileManagerSession, WithoutTheServiceTheFolderApplicationStandsIn) {
    StartSession({}, false);
    EXPECT_FALSE(fileManager->serviceExists());
    EXPECT_EQ(fileManager->showItems({root}), connectionInvalid);

    const QString folderLog = QFile::decodeName(desktopData->log("folders"));
    QFile::remove(folderLog);
    const FSSpec folder{MakeFolder("Open me #1")};
    EXPECT_EQ(DoFinderFile(kFinderOpen, &folder, nullptr), noErr);
    QList<Record> runs = WaitForRecords(folderLog, 1);
    ASSERT_EQ(runs.size(), 1);
    EXPECT_EQ(runs.first().paths, QList<QByteArray>{folder.path});

    // Reveal opens the folder that holds the item; get info cannot be had.
    const FSSpec file{MakeFile("odd \xff name")};
    EXPECT_EQ(DoFinderFile(kFinderReveal, &file, nullptr), noErr);
    runs = WaitForRecords(folderLog, 2);
    ASSERT_EQ(runs.size(), 2);
    EXPECT_EQ(runs.last().paths, QList<QByteArray>{root});
    EXPECT_EQ(DoFinderFile(kFinderGetInfo, &file, nullptr), errAEEventNotHandled);
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

// The real launcher, with the fake as every application.
class LauncherTest : public ::testing::Test {
protected:
    QByteArray MakeFile(const QByteArray &name) {
        const QByteArray path = environment.root() + "/" + name;
        WriteFile(path, "contents\n");
        return path;
    }
    TempEnvironment environment;
    platform::GioLauncher launcher;
};

TEST_F(LauncherTest, DocumentsOpenInTheirApplicationButNeverSilentlyInATerminal) {
    const QString viewerLog = QFile::decodeName(desktopData->log("viewer"));
    const QString consoleLog = QFile::decodeName(desktopData->log("console"));
    QFile::remove(viewerLog);
    QFile::remove(consoleLog);

    const QByteArray document = MakeFile("letter \xe2\x80\x94 draft.kdoc");
    EXPECT_EQ(launcher.openWithDefaultApplication(document), noErr);
    // Set as the default, the terminal program is passed over for the other.
    const QByteArray both = MakeFile("both.kboth");
    EXPECT_EQ(launcher.openWithDefaultApplication(both), noErr);
    const QList<Record> runs = WaitForRecords(viewerLog, 2);
    ASSERT_EQ(runs.size(), 2);
    // Two programs started one after the other may write in either order.
    QStringList opened = runs[0].uris + runs[1].uris;
    opened.sort();
    QStringList expected{QFile::decodeName(document), QFile::decodeName(both)};
    expected.sort();
    EXPECT_EQ(opened, expected);

    // Only a terminal program could open it: nothing is started.
    EXPECT_EQ(launcher.openWithDefaultApplication(MakeFile("notes.kcon")),
              kLSApplicationNotFoundErr);
    EXPECT_EQ(launcher.openWithDefaultApplication(environment.root() + "/gone.kdoc"), fnfErr);
    QThread::msleep(300);
    EXPECT_FALSE(QFile::exists(consoleLog));
}

TEST_F(LauncherTest, EntriesAndProgramsStartWithTheirProcessId) {
    const QString viewerLog = QFile::decodeName(desktopData->log("viewer"));
    QFile::remove(viewerLog);
    const QByteArray document = MakeFile("a.kdoc");
    std::int64_t pid = 0;
    EXPECT_EQ(
        launcher.launchDesktopEntry(desktopData->root + "/data/applications/kestrel-viewer.desktop",
                                    {document}, &pid),
        noErr);
    QList<Record> runs = WaitForRecords(viewerLog, 1);
    ASSERT_EQ(runs.size(), 1);
    EXPECT_EQ(runs.first().pid, pid);
    EXPECT_EQ(runs.first().uris, QStringList{QFile::decodeName(document)});

    const QString programLog = QFile::decodeName(environment.root() + "/program.log");
    EXPECT_EQ(launcher.launchProgram(QFile::encodeName(kFakeProgram),
                                     {"--program", QFile::encodeName(programLog), "x y"}, &pid),
              noErr);
    runs = WaitForRecords(programLog, 1);
    ASSERT_EQ(runs.size(), 1);
    EXPECT_EQ(runs.first().pid, pid);
    EXPECT_EQ(runs.first().uris, QStringList{QStringLiteral("x y")});

    EXPECT_EQ(launcher.launchProgram(environment.root() + "/no-such-program", {}, &pid), fnfErr);
    EXPECT_EQ(launcher.launchDesktopEntry(environment.root() + "/none.desktop", {}, &pid), fnfErr);
}

} // namespace
