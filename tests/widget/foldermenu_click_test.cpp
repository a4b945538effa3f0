// A click on a folder title, on the offscreen platform: the cached menu and
// its folder, the command menus, hostile and hung folders. The real menus are
// walked with the keyboard; the file manager, launcher and pointer are doubles.
#include "core/folders.h"
#include "finder/itemcommands.h"
#include "foldermenus/buildsubmenu.h"
#include "foldermenus/clickfoldermenu.h"
#include "foldermenus/foldercache.h"
#include "foldermenus/foldermenu.h"
#include "foldermenus/foldermenumodel.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakefilemanager.h"
#include "platform/doubles/fakefrontwindow.h"
#include "platform/doubles/fakelauncher.h"
#include "platform/doubles/fakeloginitems.h"
#include "platform/doubles/fakepointer.h"
#include "platform/doubles/faketerminal.h"
#include "platform/doubles/hungfolderreader.h"
#include "resources/menus.h"
#include "tests/support/desktopsession.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"
#include "tests/unit/foldermenu_testfolder.h"
#include "tests/widget/answerfiledialog.h"
#include "tests/widget/foldermenu_shown.h"
#include "titles/readymenu.h"

#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QFileDialog>
#include <QFileSystemWatcher>
#include <QMimeData>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

using Request = platform::FakeFileManager::Request;

class ClickTest : public ::testing::Test {
protected:
    void SetUp() override {
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        folder.mkdir("Deep");
        folder.touch("Deep/note.txt");
        folder.mkdir("Elsewhere");
        folder.mkdir("Elsewhere/Real folder");
        folder.touch("apple.txt");
        spec.folder = FSSpec{folder.path()};
        title.menuSpec = &spec;
        fileManager.servicePid = 77;
    }
    void TearDown() override {
        firstMenuSpec = nullptr;
        answer.reset();
        DestroyFolderCachedMenu(&title);
        TearDownDepthMenus();
    }

    // Whether the newest menu is ready for the hands: its folder read.
    static bool FolderRead() {
        const auto *menu = qobject_cast<FolderMenu *>(QApplication::activePopupWidget());
        return menu == nullptr || menu->model()->isComplete();
    }

    // Clicks the title as the title does (its menu pulled for the whole click)
    // and, once `ready` holds, plays `hands` on the newest menu: keys by name
    // ("Right", "Return") or typed text.
    OSStatus Click(QList<const char *> hands, bool suppressOpen = false,
                   const std::function<bool()> &ready = FolderRead) {
        QTimer player;
        player.setInterval(20);
        QObject::connect(&player, &QTimer::timeout, [&] {
            QWidget *front = QApplication::activePopupWidget();
            if (hands.isEmpty() || front == nullptr || !ready())
                return;
            if (auto *menu = qobject_cast<FolderMenu *>(front))
                seen.append(Shown(menu).join(u'|'));
            const QString step = QString::fromUtf8(hands.takeFirst());
            if (step.size() > 1 && step.front().isUpper())
                QTest::keyClick(front, Qt::Key(QKeySequence(step)[0].key()));
            else
                QTest::keyClicks(front, step);
        });
        player.start();
        QTimer rescue; // a menu left open by a test gone wrong is closed, not waited on
        rescue.setSingleShot(true);
        QObject::connect(&rescue, &QTimer::timeout, [] {
            ADD_FAILURE() << "the menu was still open";
            while (QWidget *popup = QApplication::activePopupWidget())
                popup->close();
        });
        rescue.start(8000);
        pulledReadyMenu = &title;
        const OSStatus status = ClickFolderMenu(QPoint(10, 26), &title, suppressOpen);
        pulledReadyMenu = nullptr;
        EXPECT_TRUE(hands.isEmpty()) << hands.size() << " steps were not played";
        return status;
    }

    // Answers the next file dialog with `path` (or cancels it when empty).
    void AnswerFileDialog(const QByteArray &path) {
        answer = std::make_unique<QTimer>();
        answer->setInterval(50);
        QObject::connect(answer.get(), &QTimer::timeout, [this, path] {
            AnswerFrontFileDialog([&](QFileDialog *dialog) {
                dialogTitle = dialog->windowTitle();
                return path;
            });
        });
        answer->start();
    }

    // The menu the next click shows, its folder read.
    QStringList NextMenu() {
        FolderMenu *menu = ReadyFolderMenu(&title);
        EXPECT_TRUE(WaitFor([&] { return menu->model()->isComplete(); }));
        return Shown(menu);
    }

    TempEnvironment environment; // the file dialog keeps settings of its own
    Folder folder;
    MenuSpec spec{};
    ReadyMenu title{};
    QStringList seen; // what the newest folder menu showed before each step
    std::unique_ptr<QTimer> answer;
    QString dialogTitle;

    Installed<platform::FileSystemFolderReader, platform::FolderReader> reader;
    Installed<platform::FakeAlerts, platform::Alerts> alerts;
    Installed<platform::FakeFileManager, platform::FileManager> fileManager;
    Installed<platform::FakeFrontWindow, platform::FrontWindow> frontWindow;
    Installed<platform::FakeLauncher, platform::Launcher> launcher;
    Installed<platform::FakeLoginItems, platform::LoginItems> loginItems;
    Installed<platform::FakePointer, platform::Pointer> pointer;
    Installed<platform::FakeTerminal, platform::Terminal> terminal;
};

TEST_F(ClickTest, AFailedRequestReturnsAtOnceAndOpeningCanBeSuppressed) {
    fileManager.failure = connectionInvalid;
    pointer.state.modifiers = cmdKey;
    EXPECT_EQ(Click({"deep", "Right", "Return"}), connectionInvalid);
    // The menus of that click stand until the next click takes them down.
    EXPECT_NE(subMenuRef[1], nullptr);
    fileManager.failure = noErr;
    fileManager.requests.clear();
    EXPECT_EQ(Click({"deep", "Right", "Return"}), noErr);
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"ShowItems", {folder.at("Deep/note.txt")}}}));
    EXPECT_EQ(subMenuRef[1], nullptr);

    // With opening suppressed, folder items do nothing; the commands still work.
    fileManager.requests.clear();
    EXPECT_EQ(Click({"apple", "Return"}, true), noErr);
    frontWindow.broughtToFront.clear();
    EXPECT_EQ(Click({"this", "Right", "o"}, true), noErr);
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"ShowFolders", {folder.path()}}}));
    EXPECT_EQ(frontWindow.broughtToFront, (QList<ProcessSerialNumber>{{77, 0}}))
        << "once before the request; the folder window comes forward by its token";
}

TEST_F(ClickTest, AddingAnItemLinksItIntoTheFolderAndTheNextClickShowsIt) {
    const QByteArray chosen = folder.at("Elsewhere/Real folder");
    FolderMenu *cached = ReadyFolderMenu(&title);
    AnswerFileDialog({});
    EXPECT_EQ(Click({"this", "Right", "a"}), noErr);
    EXPECT_EQ(dialogTitle, u"Choose an Item"_s);
    EXPECT_EQ(title.cachedMenu, cached) << "cancelled: nothing made, the menu kept";

    AnswerFileDialog(chosen);
    EXPECT_EQ(Click({"this", "Right", "a"}), noErr);
    ASSERT_EQ(ReadLink(folder.at("Real folder")), chosen);
    EXPECT_EQ(title.cachedMenu, nullptr);
    answer.reset();
    EXPECT_EQ(Click({"real", "Space"}), noErr); // the folder chosen itself
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"ShowFolders", {chosen}}}));

    // The folder application stands in: the folder opens there, no chooser.
    fileManager.requests.clear();
    fileManager.hasService = false;
    fileManager.hasAlternative = true;
    EXPECT_EQ(Click({"this", "Right", "a"}), noErr);
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"AlternativeOpen", {folder.path()}}}));
}

// What the context menu offers is told by the names alone; the trash looks
// again, following links, before it takes anything.
TEST_F(ClickTest, TheContextMenuOffersWhatSuitsTheItemAndCopiesItsPath) {
    spec.contents = kContentsFolder;
    firstMenuSpec = &spec;
    const QByteArray home = environment.home();
    const struct {
        const char *what;
        MenuItemFiles item;
        bool terminal, trash, remove;
    } cases[] = {
        {"a file of the title's folder",
         {folder.at("apple.txt"), folder.at("apple.txt")},
         false,
         true,
         true},
        {"a link there to a folder", {home, folder.at("home link"), true}, true, false, true},
        {"a file of a subfolder",
         {folder.at("Deep/note.txt"), folder.at("Deep/note.txt")},
         false,
         true,
         false},
        {"the title's folder", {folder.path(), folder.path(), true}, true, false, false},
        {"a folder that holds it", {ParentPath(folder.path()), {}, true}, true, false, false},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(IsItemCommandOffered(ItemCommand::OpenInTerminal, c.item), c.terminal) << c.what;
        EXPECT_EQ(IsItemCommandOffered(ItemCommand::MoveToTrash, c.item), c.trash) << c.what;
        EXPECT_EQ(IsItemCommandOffered(ItemCommand::RemoveFromMenu, c.item), c.remove) << c.what;
    }
    ASSERT_EQ(::symlink(folder.path().constData(), folder.at("Deep/back").constData()), 0);
    DoItemCommand(ItemCommand::MoveToTrash, {folder.at("Deep/back/"), {}, true});
    EXPECT_TRUE(fileManager.requests.isEmpty());
    EXPECT_EQ(alerts.alerts.size(), 1);

    EXPECT_EQ(Click({"apple", "Menu", "c"}), noErr);
    const QMimeData *copied = QGuiApplication::clipboard()->mimeData();
    const QByteArray uri = "file://" + folder.at("apple.txt").toPercentEncoding("/");
    EXPECT_EQ(copied->text(), QFile::decodeName(folder.at("apple.txt")));
    EXPECT_EQ(copied->data(u"text/uri-list"_s), uri + "\r\n");
    EXPECT_EQ(copied->data(u"x-special/gnome-copied-files"_s), "copy\n" + uri);

    terminal.failure = kLSApplicationNotFoundErr;
    EXPECT_EQ(Click({"deep", "Menu", "t"}), noErr);
    EXPECT_EQ(terminal.folders, QList<QByteArray>{folder.at("Deep")});
    EXPECT_TRUE(alerts.alerts.last().headline.startsWith(u"No terminal program was found"_s));
}

// Open With hands an untrusted launcher to an application that runs launchers
// only once the user has said so.
TEST_F(ClickTest, OpenWithAsksBeforeAnApplicationMayRunAnUntrustedLauncher) {
    folder.touch("tool.desktop", "[Desktop Entry]\nType=Application\nName=Tool\nExec=tool\n");
    launcher.declaredApplications = {{"runner", u"Runner"_s, {}, true},
                                     {"editor", u"Editor"_s, {}, false}};
    alerts.answers = {0}; // Cancel
    const struct {
        const char *item, *application;
        bool asked;
    } cases[] = {{"tool.desktop", "runner", true},
                 {"tool.desktop", "editor", false},
                 {"apple.txt", "runner", false}};
    for (const auto &c : cases) {
        alerts.alerts.clear();
        launcher.launches.clear();
        OpenWithApplication(folder.at(c.item), c.application, false);
        EXPECT_EQ(alerts.alerts.size(), c.asked ? 1 : 0) << c.item << ' ' << c.application;
        EXPECT_EQ(launcher.launches.size(), c.asked ? 0 : 1) << c.item << ' ' << c.application;
    }
}

// About and Preferences show their dialogs (closed here as soon as they
// show); Quit ends the event loop it runs in.
TEST_F(ClickTest, TheApplicationCommandsShowTheirDialogsAndQuit) {
    QStringList shown;
    QTimer closer;
    closer.setInterval(50);
    QObject::connect(&closer, &QTimer::timeout, [&] {
        if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
            shown.append(dialog->windowTitle());
            dialog->reject();
        }
    });
    closer.start();
    EXPECT_EQ(Click({"kes", "Right", "a"}), noErr);
    EXPECT_EQ(Click({"kes", "Right", "p"}), noErr);
    ASSERT_EQ(shown.size(), 2) << qPrintable(shown.join(u'|'));
    EXPECT_TRUE(shown[0].contains(u"About"_s)) << qPrintable(shown[0]);
    EXPECT_TRUE(shown[1].contains(u"Preferences"_s)) << qPrintable(shown[1]);

    bool quitByMenu = false;
    QTimer::singleShot(0, [&] {
        EXPECT_EQ(Click({"kes", "Right", "q"}), noErr);
        quitByMenu = true;
    });
    QTimer::singleShot(10000, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QCoreApplication::exec(), 0);
    EXPECT_TRUE(quitByMenu);
}

// A change of the folder drops the cached menu, also while it is on screen,
// where it stays until the click is over.
TEST_F(ClickTest, TheCachedMenuFollowsItsFolder) {
    QPointer<FolderMenu> menu = ReadyFolderMenu(&title);
    ASSERT_TRUE(WaitFor([&] { return title.folderSubscription != nullptr; }));
    bool changed = false;
    bool shownWhileDropped = false;
    EXPECT_EQ(Click({"Escape"}, false,
                    [&] {
                        if (!std::exchange(changed, true))
                            folder.touch("added");
                        shownWhileDropped = title.cachedMenu == nullptr && menu->isVisible();
                        return shownWhileDropped;
                    }),
              noErr);
    EXPECT_TRUE(shownWhileDropped);
    EXPECT_TRUE(WaitFor([&] { return menu == nullptr; }, 2000));
    EXPECT_TRUE(NextMenu().contains(u"added"_s));
    ReadyFolderMenu(&title);
    firstReadyMenu = &title;
    DestroyFolderCachedMenu(nullptr); // a volume came or went: every title's
    firstReadyMenu = nullptr;
    EXPECT_EQ(title.cachedMenu, nullptr);
}

// What an archive or an attacker may leave in a folder: the menu neither hangs
// nor follows a link by its text, and a folder made again shows again.
TEST_F(ClickTest, HostileFoldersNeitherHangTheMenuNorMisleadIt) {
    const struct {
        const char *what;
        std::function<void(const Folder &)> make;
        QStringList shown;
        const char *storedAs; // the path of the first item, in the folder
    } cases[] = {
        {"a pipe behind a desktop entry",
         [](const Folder &f) {
             ASSERT_EQ(mkfifo(f.at(".pipe").constData(), 0644), 0);
             ASSERT_EQ(symlink(".pipe", f.at("README.desktop").constData()), 0);
         },
         {u"README.desktop"_s},
         ".pipe"},
        {"a sparse hidden-names file of 4 GB",
         [](const Folder &f) {
             f.touch(".hidden", "kept\n");
             ASSERT_EQ(truncate(f.at(".hidden").constData(), 4LL << 30), 0);
             f.touch("kept");
         },
         {u"kept"_s},
         "kept"},
        {"a link climbing out of a folder that does not exist",
         [](const Folder &f) {
             ASSERT_EQ(symlink("nonexist/../secret.txt", f.at("link").constData()), 0);
             f.touch("secret.txt");
         },
         {u"link"_s, u"secret.txt"_s},
         "link"},
    };
    for (const auto &c : cases) {
        Folder hostile;
        c.make(hostile);
        spec.folder = FSSpec{hostile.path()};
        DestroyFolderCachedMenu(&title);
        EXPECT_EQ(NextMenu().mid(0, c.shown.size()), c.shown) << c.what;
        EXPECT_EQ(FolderItemPath(title.cachedMenu, 1), hostile.at(c.storedAs)) << c.what;
    }
    // Deleted while its menu was cached, looked at while gone, made again.
    spec.folder = FSSpec{folder.at("Deep")};
    DestroyFolderCachedMenu(&title);
    EXPECT_EQ(NextMenu(), (QStringList{u"note.txt"_s, {}, u"This Folder"_s, u"Kestrel Menu"_s}));
    ASSERT_TRUE(WaitFor([&] { return title.folderSubscription != nullptr; }));
    ASSERT_EQ(unlink(folder.at("Deep/note.txt").constData()), 0);
    ASSERT_EQ(rmdir(folder.at("Deep").constData()), 0);
    EXPECT_TRUE(WaitFor([&] { return title.cachedMenu == nullptr; }));
    EXPECT_EQ(NextMenu().first(), EmptyFolderText());
    folder.mkdir("Deep");
    folder.touch("Deep/back again");
    EXPECT_EQ(NextMenu().first(), u"back again"_s);
}

// A folder on a mount that stopped answering: its menu says it is loading,
// and every click is answered; a second one waits on the same reading.
TEST_F(ClickTest, AFolderThatNeverAnswersShowsLoadingAndTheNextClickIsAnswered) {
    const Installed<platform::HungFolderReader, platform::FolderReader> hung;
    for (int click = 0; click < 2; ++click) {
        seen.clear();
        EXPECT_EQ(Click({"Escape"}, false, [] { return true; }), noErr);
        EXPECT_EQ(seen, QStringList{LoadingFolderText() + u"||This Folder|Kestrel Menu"_s});
    }
    EXPECT_EQ(hung.waiting(), 1);
    EXPECT_EQ(title.folderSubscription, nullptr) << "a folder that does not answer is not watched";
}

} // namespace
