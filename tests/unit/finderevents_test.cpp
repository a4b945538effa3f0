// Opening, revealing and showing the information of items, and what a failed
// choice says, against doubles of the desktop's programs, on real files.
#include "core/errors.h"
#include "finder/choicefailure.h"
#include "finder/finderevents.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakefilemanager.h"
#include "platform/doubles/fakefrontwindow.h"
#include "platform/doubles/fakelauncher.h"
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
        for (const QByteArray &path : {At("holiday.desktop"), installed})
            WriteFile(path, "[Desktop Entry]\nType=Application\nName=Editor\nExec=ed %F\n");
        WriteFile(At("site.desktop"), "[Desktop Entry]\nType=Link\nName=S\nURL=https://e.org/\n");
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
    QByteArray base =
        QFile::encodeName(QFileInfo(QFile::decodeName(environment.root())).canonicalFilePath());
    QByteArray root = base + "/items",
               installed = base + "/home/.local/share/applications/e.desktop";
    Installed<platform::FakeFileManager, platform::FileManager> fileManager;
    Installed<platform::FakeLauncher, platform::Launcher> launcher;
    Installed<platform::FakeFrontWindow, platform::FrontWindow> front;
    Installed<platform::FakeAlerts, platform::Alerts> alerts;
    Installed<platform::FakeTrustMarks, platform::TrustMarks> trust;
};

TEST_F(FinderEventsTest, OpeningStartsOnlyTrustedLaunchersAndNeverAProgram) {
    alerts.answers = {0, 2}; // Cancel, then Trust and Launch
    for (const char *name : {"Docs", "Docs link", "note.txt", "Marked.AppDir", "Editor link",
                             "site.desktop", "Tool.AppDir", "Tool.AppDir"})
        Do(kFinderOpen, name);
    EXPECT_EQ(launcher.launches, (QList<Launch>{{"Default", At("note.txt"), {}},
                                                {"Program", At("Marked.AppDir/AppRun"), {}},
                                                {"Entry", installed, {}},
                                                {"Program", At("Tool.AppDir/AppRun"), {}},
                                                {"Program", At("Tool.AppDir/AppRun"), {}}}));
    EXPECT_EQ(fileManager.requests,
              (QList<Request>{{"ShowFolders", {At("Docs")}}, {"ShowFolders", {At("Docs")}}}));
    // The requests carry the user's token; nothing is forced to the front.
    EXPECT_TRUE(front.broughtToFront.isEmpty());
    // Asked about the marked but not executable entry, and the bundle once.
    ASSERT_EQ(alerts.alerts.size(), 2);
    const platform::Alert &asked = alerts.alerts.first();
    EXPECT_EQ(asked.headline, QStringLiteral("“site.desktop” is not a trusted launcher."));
    EXPECT_TRUE(asked.explanation.contains(QStringLiteral("https://e.org/")));
    EXPECT_TRUE(asked.explanation.contains(QFile::decodeName(At("site.desktop"))));
    EXPECT_EQ(asked.buttons.size(), 3);
    EXPECT_EQ(asked.defaultButton, 0) << "Cancel";
    EXPECT_TRUE(trust.marked.contains(At("Tool.AppDir"))) << "the mark goes on the bundle";

    trust.failure = unimpErr; // no metadata store: launched, and said so
    alerts.answers = {2};
    EXPECT_EQ(Do(kFinderOpen, "holiday.desktop"), noErr);
    EXPECT_TRUE(WaitFor([&] { return alerts.alerts.size() == 4; }, 2000));
    EXPECT_EQ(alerts.alerts.last().headline,
              QStringLiteral("“holiday.desktop” could not be marked as trusted."));
}

TEST_F(FinderEventsTest, RevealGetInfoAndTheOtherActions) {
    AEDescList list{true, {At("Docs"), At("note.txt")}};
    const FSSpec item{At("note.txt")}, folder{At("Docs")}, editor{installed};
    EXPECT_EQ(Do(kFinderReveal, "Broken"), noErr); // the link itself, as it is
    EXPECT_EQ(DoFinderFiles(kFinderReveal, &list, nullptr), noErr);
    EXPECT_EQ(DoFinderFiles(kFinderGetInfo, &list, nullptr), noErr);
    EXPECT_EQ(DoFinderFile(kFinderDuplicate, &item, &folder), noErr);
    EXPECT_EQ(DoFinderFile(kFinderOpenWith, &item, &editor), noErr);
    EXPECT_EQ(DoFinderFile(kFinderMove, &item, nullptr), paramErr);
    EXPECT_EQ(Do(kFinderGetInfo, "gone"), fnfErr);
    EXPECT_EQ(Do(kFinderOpen, "Broken"), fnfErr);
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"ShowItems", {At("Broken")}},
                                                    {"ShowItems", list.items},
                                                    {"ShowItemProperties", {At("Docs")}},
                                                    {"CopyInto", {item.path, folder.path}}}));
    EXPECT_EQ(launcher.launches, (QList<Launch>{{"Entry", installed, {item.path}}}));
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

TEST_F(FinderEventsTest, FailuresSayWhatHappenedToTheItem) {
    ReportFailedChoice(kFinderGetInfo, FSSpec{At("note.txt")}, afpAccessDenied);
    for (const OSErr reportedBefore : {userCanceledErr, procNotFound})
        ReportFailedChoice(kFinderOpen, FSSpec{At("note.txt")}, reportedBefore);
    ASSERT_EQ(alerts.alerts.size(), 1);
    EXPECT_EQ(alerts.alerts[0].headline,
              QStringLiteral("The properties of “note.txt” could not be shown. ") +
                  MakeErrorAlertTexts(afpAccessDenied).message);

    // Requests the file manager never saw go to the folder application.
    ASSERT_EQ(Do(kFinderReveal, "note.txt"), noErr);
    ASSERT_TRUE(fileManager.failed);
    fileManager.hasAlternative = true;
    fileManager.failed({"ShowFolders", {At("Docs")}, connectionInvalid});
    fileManager.failed({"ShowItems", {At("note.txt")}, connectionInvalid});
    fileManager.failed({"ShowItemProperties", {At("Docs")}, connectionInvalid});
    EXPECT_EQ(fileManager.requests.mid(1),
              (QList<Request>{{"AlternativeOpen", {At("Docs")}}, {"AlternativeOpen", {root}}}));
    ASSERT_TRUE(WaitFor([&] { return alerts.alerts.size() == 2; }, 2000));
    EXPECT_EQ(alerts.alerts[1].headline,
              QStringLiteral("Fake Files could not be reached to show “Docs”."));
}

} // namespace
