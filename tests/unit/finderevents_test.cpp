// Opening, revealing and showing the information of items, and what a failed
// choice says, against doubles of the desktop's programs, on real files.
#include "core/errors.h"
#include "finder/choicefailure.h"
#include "finder/finderevents.h"
#include "finder/launchertrust.h"
#include "platform/dbusfilemanager.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakefilemanager.h"
#include "platform/doubles/fakefrontwindow.h"
#include "platform/doubles/fakelauncher.h"
#include "platform/doubles/fakeprocesses.h"
#include "platform/doubles/faketrustmarks.h"
#include "tests/support/desktopsession.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"

#include <gtest/gtest.h>

#include <QFileInfo>

#include <sys/stat.h>
#include <unistd.h>

using Request = platform::FakeFileManager::Request;
using Launch = platform::FakeLauncher::Launch;

namespace {

class FinderEventsTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char *name :
             {"Docs/a", "note.txt", "Tool.AppDir/AppRun", "Marked.AppDir/AppRun"})
            WriteFile(At(name), "#!/bin/sh\n");
        for (const char *name : {"Tool.AppDir/AppRun", "Marked.AppDir/AppRun", "note.txt"})
            ::chmod(At(name).constData(), 0755); // a script, still not a launcher
        trust.marked.insert(At("Marked.AppDir"));
        const QByteArray launcher = "[Desktop Entry]\nType=Application\nName=Editor\nExec=ed %F\n";
        WriteFile(At("holiday.desktop"), launcher);
        WriteFile(installed, launcher);
        WriteFile(At("site.desktop"),
                  "[Desktop Entry]\nType=Link\nName=Site\nURL=https://e.org/\n");
        trust.marked.insert(At("site.desktop")); // marked, but not executable
        ::symlink(installed.constData(), At("Editor link").constData());
        ::symlink("Docs", At("Docs link").constData());
        ::symlink("missing/../note.txt", At("Broken").constData());
        fileManager.servicePid = 77;
    }
    QByteArray At(const char *name) const { return root + '/' + name; }
    OSErr Do(FinderAction action, const char *name) {
        const FSSpec spec{At(name)};
        return DoFinderFile(action, &spec, nullptr);
    }

    TempEnvironment environment;
    QByteArray root = QFile::encodeName(
        QFileInfo(QFile::decodeName(environment.root())).canonicalFilePath() + QStringLiteral("/items"));
    QByteArray installed = root + "/../home/.local/share/applications/editor.desktop";
    Installed<platform::FakeFileManager, platform::FileManager> fileManager;
    Installed<platform::FakeLauncher, platform::Launcher> launcher;
    Installed<platform::FakeFrontWindow, platform::FrontWindow> front;
    Installed<platform::FakeAlerts, platform::Alerts> alerts;
    Installed<platform::FakeProcesses, platform::Processes> processes;
    Installed<platform::FakeTrustMarks, platform::TrustMarks> trust;
};

TEST_F(FinderEventsTest, OpeningStartsOnlyTrustedLaunchersAndNeverAProgram) {
    struct Case {
        const char *name;
        Launch launch; // empty: the file manager shows it
    };
    const QByteArray real =
        QFile::encodeName(QFileInfo(QFile::decodeName(installed)).canonicalFilePath());
    const Case cases[] = {
        {"Docs", {}},
        {"Docs link", {}},
        {"note.txt", {"Default", At("note.txt"), {}}},
        {"Marked.AppDir", {"Program", At("Marked.AppDir/AppRun"), {}}},
        {"Editor link", {"Entry", real, {}}},
    };
    for (const Case &c : cases)
        EXPECT_EQ(Do(kFinderOpen, c.name), noErr) << c.name;
    QList<Launch> launched;
    for (const Case &c : cases) {
        if (!c.launch.what.isEmpty())
            launched.append(c.launch);
    }
    EXPECT_EQ(launcher.launches, launched);
    EXPECT_EQ(fileManager.requests,
              (QList<Request>{{"ShowFolders", {At("Docs")}}, {"ShowFolders", {At("Docs")}}}));
    // The requests carry the user's token; nothing is forced to the front.
    EXPECT_TRUE(front.broughtToFront.isEmpty());
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

TEST_F(FinderEventsTest, AnUntrustedLauncherRunsOnlyWhenTheUserSays) {
    alerts.answers = {0, 1, 0, 2};
    for (const char *name : {"holiday.desktop", "holiday.desktop", "site.desktop", "Tool.AppDir"})
        Do(kFinderOpen, name);
    EXPECT_EQ(launcher.launches, (QList<Launch>{{"Entry", At("holiday.desktop"), {}},
                                                {"Program", At("Tool.AppDir/AppRun"), {}}}));
    ASSERT_EQ(alerts.alerts.size(), 4);
    const platform::Alert &asked = alerts.alerts.first();
    EXPECT_EQ(asked.headline, QStringLiteral("“holiday.desktop” is not a trusted launcher."));
    EXPECT_TRUE(asked.explanation.contains(QStringLiteral("ed %F")));
    EXPECT_TRUE(asked.explanation.contains(QFile::decodeName(At("holiday.desktop"))));
    EXPECT_EQ(asked.buttons.size(), 3);
    EXPECT_EQ(asked.defaultButton, 0) << "Cancel";
    EXPECT_EQ(asked.escapeButton, 0);
    EXPECT_TRUE(alerts.alerts[2].explanation.contains(QStringLiteral("https://e.org/")));
    EXPECT_EQ(Do(kFinderOpen, "holiday.desktop"), userCanceledErr) << "cancelled";

    // Launched once, still untrusted; trusted and launched, runs at once since.
    EXPECT_FALSE(IsTrustedLauncher(At("holiday.desktop")));
    EXPECT_TRUE(IsTrustedLauncher(At("Tool.AppDir")));
    alerts.answers = {2};
    EXPECT_EQ(Do(kFinderOpen, "holiday.desktop"), noErr);
    EXPECT_EQ(Do(kFinderOpen, "holiday.desktop"), noErr);
    EXPECT_EQ(alerts.alerts.size(), 6);
    EXPECT_EQ(::access(At("holiday.desktop").constData(), X_OK), 0);

    trust.failure = unimpErr; // no metadata store: launched, and says so
    alerts.answers = {2};
    EXPECT_EQ(Do(kFinderOpen, "site.desktop"), noErr);
    EXPECT_TRUE(WaitFor([&] { return alerts.alerts.size() == 8; }, 2000));
    EXPECT_EQ(alerts.alerts.last().headline,
              QStringLiteral("“site.desktop” could not be marked as trusted."));
}

TEST_F(FinderEventsTest, RevealAndGetInfo) {
    EXPECT_EQ(Do(kFinderReveal, "note.txt"), noErr);
    EXPECT_EQ(Do(kFinderReveal, "Broken"), noErr); // the link itself, as it is
    AEDescList list{true, {At("Docs"), At("note.txt")}};
    EXPECT_EQ(DoFinderFiles(kFinderReveal, &list, nullptr), noErr);
    EXPECT_EQ(DoFinderFiles(kFinderGetInfo, &list, nullptr), noErr);
    EXPECT_EQ(Do(kFinderGetInfo, "gone"), fnfErr);
    EXPECT_EQ(Do(kFinderOpen, "gone"), fnfErr);
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"ShowItems", {At("note.txt")}},
                                                    {"ShowItems", {At("Broken")}},
                                                    {"ShowItems", list.items},
                                                    {"ShowItemProperties", {At("Docs")}}}));
    EXPECT_TRUE(front.broughtToFront.isEmpty());
    EXPECT_EQ(BringFinderToFront(), noErr);
    EXPECT_EQ(front.broughtToFront, (QList<ProcessSerialNumber>{{77, 0}}));

    // The folder application: each item's folder in turn, no properties window.
    fileManager.hasService = false;
    fileManager.hasAlternative = true;
    fileManager.requests.clear();
    EXPECT_EQ(DoFinderFiles(kFinderReveal, &list, nullptr), noErr);
    EXPECT_EQ(Do(kFinderOpen, "Docs"), noErr);
    EXPECT_EQ(DoFinderFiles(kFinderGetInfo, &list, nullptr), errAEEventNotHandled);
    fileManager.failure = fnfErr;
    EXPECT_EQ(DoFinderFiles(kFinderReveal, &list, nullptr), fnfErr);
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"AlternativeOpen", {root}},
                                                    {"AlternativeOpen", {root}},
                                                    {"AlternativeOpen", {At("Docs")}},
                                                    {"AlternativeOpen", {root}}}));
    EXPECT_TRUE(alerts.alerts.isEmpty());

    // Neither: every lookup reports it.
    fileManager.hasAlternative = false;
    EXPECT_EQ(Do(kFinderOpen, "Docs"), procNotFound);
    EXPECT_EQ(BringFinderToFront(), procNotFound);
    EXPECT_EQ(alerts.alerts.size(), 2);
}

TEST_F(FinderEventsTest, ExtraItemActions) {
    const FSSpec item{At("note.txt")}, folder{At("Docs")}, editor{installed};
    EXPECT_EQ(DoFinderFile(kFinderDuplicate, &item, &folder), noErr);
    EXPECT_EQ(DoFinderFile(kFinderMove, &item, &folder), noErr);
    EXPECT_EQ(DoFinderFile(kFinderOpenWith, &item, &editor), noErr);
    EXPECT_EQ(DoFinderFile(kFinderMove, &item, nullptr), paramErr);
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"CopyInto", {item.path, folder.path}},
                                                    {"MoveInto", {item.path, folder.path}}}));
    EXPECT_EQ(launcher.launches, (QList<Launch>{{"Entry", installed, {item.path}}}));
}

TEST_F(FinderEventsTest, FailedChoicesSayWhyAndOfferWhatCanBeDone) {
    const auto Report = [&](FinderAction action, const char *name, OSErr err, int answer) {
        alerts.answers = {answer};
        ReportFailedChoice(action, FSSpec{At(name)}, err);
        return alerts.alerts.isEmpty() ? platform::Alert{} : alerts.alerts.takeLast();
    };
    platform::Alert alert = Report(kFinderOpen, "note.txt", kLSApplicationNotFoundErr, 1);
    EXPECT_EQ(alert.headline,
              QStringLiteral("No application is set to open “note.txt” (Kestrel document)."));
    EXPECT_EQ(alert.buttons.size(), 3);
    EXPECT_EQ(alert.details, QStringLiteral("Error -10814"));
    alert = Report(kFinderOpen, "Broken", fnfErr, 0);
    EXPECT_EQ(alert.headline,
              QStringLiteral("“Broken” points to “missing/../note.txt”, which does not exist."));
    EXPECT_EQ(alert.buttons.size(), 2);
    EXPECT_EQ(fileManager.requests,
              (QList<Request>{{"ShowItems", {At("note.txt")}}, {"ShowItems", {At("Broken")}}}));
    alert = Report(kFinderGetInfo, "note.txt", afpAccessDenied, 0);
    EXPECT_EQ(alert.headline, QStringLiteral("The properties of “note.txt” could not be shown. ") +
                                  MakeErrorAlertTexts(afpAccessDenied).message);
    for (const OSErr reported : {userCanceledErr, procNotFound})
        Report(kFinderOpen, "note.txt", reported, 0);
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

TEST_F(FinderEventsTest, RequestsThatFailLaterAreReportedOrGoElsewhere) {
    ASSERT_EQ(Do(kFinderReveal, "note.txt"), noErr);
    ASSERT_TRUE(fileManager.failed);
    fileManager.hasAlternative = true;
    fileManager.failed({"ShowFolders", {At("Docs")}, connectionInvalid});
    fileManager.failed({"ShowItems", {At("note.txt")}, connectionInvalid});
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"ShowItems", {At("note.txt")}},
                                                    {"AlternativeOpen", {At("Docs")}},
                                                    {"AlternativeOpen", {root}}}));
    fileManager.failed({"ShowItems", {At("note.txt")}, errAETimeout});
    fileManager.failed({"ShowItemProperties", {At("Docs")}, connectionInvalid});
    EXPECT_TRUE(alerts.alerts.isEmpty()) << "not while a request is being handled";
    ASSERT_TRUE(WaitFor([&] { return alerts.alerts.size() == 2; }, 2000));
    EXPECT_EQ(alerts.alerts[0].headline,
              QStringLiteral("Fake Files did not answer in time to show “note.txt”."));
    EXPECT_EQ(alerts.alerts[1].headline,
              QStringLiteral("Fake Files could not be reached to show “Docs”."));
}

TEST(FileUriTest, AnyNameComesBackByteForByte) {
    for (const QByteArray &name :
         {QByteArray("with space"), QByteArray("hash#tag?q=1&x"), QByteArray("100% sure"),
          QByteArray("line\nbreak"), QByteArray("\xff\xfe not UTF-8"), QByteArray(255, 'n')}) {
        const QByteArray uri = platform::FileUriFromPath("/srv/" + name);
        EXPECT_TRUE(uri.startsWith("file:///srv/"));
        EXPECT_FALSE(uri.contains('#') || uri.contains('?') || uri.contains('\n'));
        EXPECT_EQ(QByteArray::fromPercentEncoding(uri.mid(7)), "/srv/" + name);
    }
}

} // namespace
