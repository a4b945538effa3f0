// Opening, revealing and showing the information of items, against doubles of
// the file manager, the launcher and the front window, on real files.
#include "finder/alias.h"
#include "finder/finderevents.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakefilemanager.h"
#include "platform/doubles/fakefrontwindow.h"
#include "platform/doubles/fakelauncher.h"
#include "platform/doubles/fakeprocesses.h"
#include "platform/service.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

using platform::FakeFileManager;
using platform::FakeLauncher;
using Request = FakeFileManager::Request;
using Launch = FakeLauncher::Launch;

namespace {

class FinderEventsTest : public ::testing::Test {
protected:
    void SetUp() override {
        root = environment.root() + "/items";
        docs = root + "/Docs";
        note = root + "/note.txt";
        ASSERT_TRUE(QDir().mkpath(QFile::decodeName(docs)));
        WriteFile(note, "text\n");
        ASSERT_EQ(::symlink(docs.constData(), (root + "/DocsLink").constData()), 0);
        ASSERT_EQ(::symlink("missing", (root + "/Broken").constData()), 0);
        WriteFile(root + "/Tool.AppDir/AppRun", "#!/bin/sh\n");
        ASSERT_EQ(::chmod((root + "/Tool.AppDir/AppRun").constData(), 0755), 0);
        WriteFile(root + "/editor.desktop",
                  "[Desktop Entry]\nType=Application\nName=Editor\nExec=editor %F\n");
        WriteFile(root + "/site.desktop",
                  "[Desktop Entry]\nType=Link\nName=Site\nURL=https://example.org/a b\n");
        fileManager.servicePid = 77;
    }

    FSSpec Spec(const QByteArray &name) const { return FSSpec{root + "/" + name}; }

    TempEnvironment environment;
    QByteArray root, docs, note;
    Installed<platform::FakeFileManager, platform::FileManager> fileManager;
    Installed<platform::FakeLauncher, platform::Launcher> launcher;
    Installed<platform::FakeFrontWindow, platform::FrontWindow> front;
    Installed<platform::FakeAlerts, platform::Alerts> alerts;
    Installed<platform::FakeProcesses, platform::Processes> processes;
};

TEST_F(FinderEventsTest, OpeningFoldersAndLinksToThemShowsTheFolderInFront) {
    const FSSpec folder = Spec("Docs");
    EXPECT_EQ(DoFinderFile(kFinderOpen, &folder, nullptr), noErr);
    const FSSpec link = Spec("DocsLink");
    EXPECT_EQ(DoFinderFile(kFinderOpen, &link, nullptr), noErr);

    EXPECT_EQ(fileManager.requests,
              (QList<Request>{{"ShowFolders", {docs}}, {"ShowFolders", {docs}}}));
    EXPECT_EQ(front.broughtToFront, (QList<ProcessSerialNumber>{{77, 0}, {77, 0}}));
    EXPECT_TRUE(launcher.launches.isEmpty());
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

TEST_F(FinderEventsTest, OpeningOtherItemsLaunchesAndLeavesTheFileManagerBehind) {
    for (const char *name : {"note.txt", "Tool.AppDir", "editor.desktop", "site.desktop"}) {
        const FSSpec item = Spec(name);
        EXPECT_EQ(DoFinderFile(kFinderOpen, &item, nullptr), noErr) << name;
    }
    EXPECT_EQ(launcher.launches, (QList<Launch>{{"Default", note, {}},
                                                {"Program", root + "/Tool.AppDir/AppRun", {}},
                                                {"Entry", root + "/editor.desktop", {}},
                                                {"Url", "https://example.org/a b", {}}}));
    EXPECT_TRUE(fileManager.requests.isEmpty());
    EXPECT_TRUE(front.broughtToFront.isEmpty());
}

TEST_F(FinderEventsTest, RevealAndGetInfoComeToTheFrontFirst) {
    const FSSpec item = Spec("note.txt");
    EXPECT_EQ(DoFinderFile(kFinderReveal, &item, nullptr), noErr);
    EXPECT_EQ(DoFinderFile(kFinderGetInfo, &item, nullptr), noErr);
    EXPECT_EQ(fileManager.requests,
              (QList<Request>{{"ShowItems", {note}}, {"ShowItemProperties", {note}}}));
    EXPECT_EQ(front.broughtToFront.size(), 2);

    // A list is revealed in one request; get info shows the first item only.
    AEDescList list{true, {}};
    for (const char *name : {"Docs", "note.txt", "Tool.AppDir"}) {
        const FSSpec each = Spec(name);
        ASSERT_EQ(AddFileToAEList(&each, &list), noErr);
    }
    fileManager.requests.clear();
    EXPECT_EQ(DoFinderFiles(kFinderReveal, &list, nullptr), noErr);
    EXPECT_EQ(DoFinderFiles(kFinderGetInfo, &list, nullptr), noErr);
    EXPECT_EQ(fileManager.requests,
              (QList<Request>{{"ShowItems", {docs, note, root + "/Tool.AppDir"}},
                              {"ShowItemProperties", {docs}}}));
}

TEST_F(FinderEventsTest, BrokenAndVanishedItemsGiveClearStatuses) {
    // A broken link goes to the file manager as it is.
    const FSSpec broken = Spec("Broken");
    EXPECT_EQ(DoFinderFile(kFinderReveal, &broken, nullptr), noErr);
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"ShowItems", {root + "/Broken"}}}));

    // Nothing can be shown of an item that has gone.
    fileManager.requests.clear();
    const FSSpec gone = Spec("gone");
    EXPECT_EQ(DoFinderFile(kFinderGetInfo, &gone, nullptr), fnfErr);
    EXPECT_EQ(DoFinderFile(kFinderOpen, &gone, nullptr), fnfErr);
    EXPECT_TRUE(fileManager.requests.isEmpty());
    EXPECT_TRUE(launcher.launches.isEmpty());

    const FSSpec relative{"note.txt"};
    EXPECT_EQ(DoFinderFile(kFinderOpen, &relative, nullptr), paramErr);
}

TEST_F(FinderEventsTest, FailuresOfTheFileManagerAreReturnedNotReported) {
    fileManager.failure = connectionInvalid;
    const FSSpec folder = Spec("Docs");
    EXPECT_EQ(DoFinderFile(kFinderOpen, &folder, nullptr), connectionInvalid);
    // The folder did not open, so nothing is brought forward after it.
    EXPECT_TRUE(front.broughtToFront.isEmpty());
    launcher.failure = kLSApplicationNotFoundErr;
    const FSSpec item = Spec("note.txt");
    EXPECT_EQ(DoFinderFile(kFinderOpen, &item, nullptr), kLSApplicationNotFoundErr);
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

TEST_F(FinderEventsTest, ExtraItemActions) {
    const FSSpec item = Spec("note.txt");
    const FSSpec folder = Spec("Docs");
    const FSSpec editor = Spec("editor.desktop");
    EXPECT_EQ(DoFinderFile(kFinderDuplicate, &item, &folder), noErr);
    EXPECT_EQ(DoFinderFile(kFinderMove, &item, &folder), noErr);
    EXPECT_EQ(DoFinderFile(kFinderOpenWith, &item, &editor), noErr);
    EXPECT_EQ(DoFinderFile(kFinderMove, &item, nullptr), paramErr);
    EXPECT_EQ(fileManager.requests,
              (QList<Request>{{"CopyInto", {note, docs}}, {"MoveInto", {note, docs}}}));
    EXPECT_EQ(launcher.launches, (QList<Launch>{{"Entry", root + "/editor.desktop", {note}}}));
}

TEST_F(FinderEventsTest, TheServiceIsChosenOverTheAlternative) {
    fileManager.hasAlternative = true;
    fileManager.alternativePid = 55;
    ProcessSerialNumber psn;
    bool alternate = true;
    EXPECT_EQ(GetFinderProcess(&psn, &alternate), noErr);
    EXPECT_FALSE(alternate);
    EXPECT_EQ(psn, (ProcessSerialNumber{77, 0}));
}

TEST_F(FinderEventsTest, AServiceNotYetStartedIsUsedButNotRaised) {
    fileManager.servicePid = 0; // activatable: the bus starts it on the first request
    const FSSpec folder = Spec("Docs");
    EXPECT_EQ(DoFinderFile(kFinderOpen, &folder, nullptr), noErr);
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"ShowFolders", {docs}}}));
    EXPECT_TRUE(front.broughtToFront.isEmpty());
}

class AlternativeTest : public FinderEventsTest {
protected:
    void SetUp() override {
        FinderEventsTest::SetUp();
        fileManager.hasService = false;
        fileManager.hasAlternative = true;
        fileManager.alternativePid = 55;
        for (const char *name : {"note.txt", "Docs", "Tool.AppDir"}) {
            const FSSpec each = Spec(name);
            ASSERT_EQ(AddFileToAEList(&each, &list), noErr);
        }
    }
    AEDescList list{true, {}};
};

TEST_F(AlternativeTest, RevealOpensEachItemsFolderInTurn) {
    ProcessSerialNumber psn;
    bool alternate = false;
    EXPECT_EQ(GetFinderProcess(&psn, &alternate), noErr);
    EXPECT_TRUE(alternate);

    EXPECT_EQ(DoFinderFiles(kFinderReveal, &list, nullptr), noErr);
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"AlternativeOpen", {root}},
                                                    {"AlternativeOpen", {root}},
                                                    {"AlternativeOpen", {root}}}));
    EXPECT_EQ(front.broughtToFront.size(), 3);

    // The first failure ends the list.
    fileManager.requests.clear();
    fileManager.failure = fnfErr;
    fileManager.failFrom = 2;
    EXPECT_EQ(DoFinderFiles(kFinderReveal, &list, nullptr), fnfErr);
    EXPECT_EQ(fileManager.requests.size(), 2);
}

TEST_F(AlternativeTest, OpenGoesToTheFolderApplicationAndGetInfoCannotBeDone) {
    const FSSpec folder = Spec("Docs");
    EXPECT_EQ(DoFinderFile(kFinderOpen, &folder, nullptr), noErr);
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"AlternativeOpen", {docs}}}));
    EXPECT_EQ(front.broughtToFront, (QList<ProcessSerialNumber>{{55, 0}}));

    fileManager.requests.clear();
    EXPECT_EQ(DoFinderFiles(kFinderGetInfo, &list, nullptr), errAEEventNotHandled);
    EXPECT_TRUE(fileManager.requests.isEmpty());
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

TEST_F(FinderEventsTest, WithoutAnyFileManagerEveryCallAlerts) {
    fileManager.hasService = false;
    fileManager.hasAlternative = false;
    const FSSpec folder = Spec("Docs");
    EXPECT_EQ(DoFinderFile(kFinderOpen, &folder, nullptr), procNotFound);
    ASSERT_EQ(alerts.alerts.size(), 1);
    EXPECT_EQ(alerts.alerts.first().status, -600);
    EXPECT_EQ(BringFinderToFront(), procNotFound);
    EXPECT_EQ(alerts.alerts.size(), 2);
    EXPECT_TRUE(fileManager.requests.isEmpty());
    EXPECT_TRUE(launcher.launches.isEmpty());
    EXPECT_TRUE(front.broughtToFront.isEmpty());
}

class ResolveAliasFileTest : public ::testing::Test {
protected:
    QByteArray Make(const char *target, const char *name) {
        const QByteArray link = root() + "/" + name;
        EXPECT_EQ(::symlink(target, link.constData()), 0);
        return link;
    }
    QByteArray root() const { return environment.root(); }
    TempEnvironment environment;
};

TEST_F(ResolveAliasFileTest, FollowsChainsRelativeAndAbsolute) {
    ASSERT_TRUE(QDir().mkpath(QFile::decodeName(root() + "/sub/Folder")));
    Make("sub/Folder", "first");
    Make((root() + "/first").constData(), "second");
    Make("./second", "third");

    FSSpec spec{root() + "/third"};
    bool isFolder = false, aliased = false;
    EXPECT_EQ(ResolveAliasFile(&spec, true, &isFolder, &aliased), noErr);
    EXPECT_EQ(spec.path, root() + "/sub/Folder");
    EXPECT_TRUE(isFolder);
    EXPECT_TRUE(aliased);

    // One step only: the next link of the chain, which leads to a folder.
    spec.path = root() + "/third";
    EXPECT_EQ(ResolveAliasFile(&spec, false, &isFolder, &aliased), noErr);
    EXPECT_EQ(spec.path, root() + "/second");
    EXPECT_TRUE(isFolder);

    // Not a link: unchanged.
    spec.path = root() + "/sub";
    EXPECT_EQ(ResolveAliasFile(&spec, true, &isFolder, &aliased), noErr);
    EXPECT_EQ(spec.path, root() + "/sub");
    EXPECT_FALSE(aliased);
}

TEST_F(ResolveAliasFileTest, BrokenAndLoopingLinksStayAsTheyAre) {
    const QByteArray broken = Make("nowhere", "broken");
    Make("loop-b", "loop-a");
    const QByteArray loop = Make("loop-a", "loop-b");

    FSSpec spec{broken};
    bool isFolder = true;
    EXPECT_EQ(ResolveAliasFile(&spec, true, &isFolder, nullptr), fnfErr);
    EXPECT_EQ(spec.path, broken);
    spec.path = loop;
    EXPECT_EQ(ResolveAliasFile(&spec, true, &isFolder, nullptr), ioErr);
    EXPECT_EQ(spec.path, loop);
    spec.path = root() + "/absent";
    EXPECT_EQ(ResolveAliasFile(&spec, true, &isFolder, nullptr), fnfErr);
}

} // namespace
