// A click on a folder title, on the offscreen platform: the real menus walked
// with the keyboard and the mouse, the file manager, launcher and pointer
// played by doubles.
#include "core/settings.h"
#include "foldermenus/buildsubmenu.h"
#include "foldermenus/clickfoldermenu.h"
#include "foldermenus/foldercache.h"
#include "foldermenus/menustyle.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakefilemanager.h"
#include "platform/doubles/fakefrontwindow.h"
#include "platform/doubles/fakelauncher.h"
#include "platform/doubles/fakeloginitems.h"
#include "platform/doubles/fakepointer.h"
#include "platform/service.h"
#include "resources/menus.h"
#include "tests/support/desktopsession.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"
#include "tests/unit/foldermenu_testfolder.h"
#include "titles/readymenu.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <unistd.h>

namespace {

using Request = platform::FakeFileManager::Request;
using Launch = platform::FakeLauncher::Launch;

// One step of the user's hands while the menu is up: a key, typed text, a
// pause, or a mouse release on the item with the given text (in the newest
// menu showing it) or outside every menu.
struct Step {
    enum Kind { Key, Text, Pause, ReleaseOn, ReleaseOutside } kind;
    int key = 0; // the key, or the pause in milliseconds
    QString text;
};
Step Key(int key) {
    return {Step::Key, key, {}};
}
Step Type(const char *text) {
    return {Step::Text, 0, QString::fromUtf8(text)};
}
Step Pause(int ms) {
    return {Step::Pause, ms, {}};
}
Step ReleaseOn(const char *text) {
    return {Step::ReleaseOn, 0, QString::fromUtf8(text)};
}
Step ReleaseOutside() {
    return {Step::ReleaseOutside, 0, {}};
}

QMenu *FrontMenu() {
    return qobject_cast<QMenu *>(QApplication::activePopupWidget());
}

QAction *ItemNamed(const QMenu *menu, const QString &text) {
    for (QAction *item : menu->actions()) {
        if (item->text() == text)
            return item;
    }
    return nullptr;
}

// Where the item with `text` stands on the screen, in an open menu showing it.
std::optional<QPoint> WhereIs(const QString &text) {
    for (QWidget *window : QApplication::topLevelWidgets()) {
        auto *menu = qobject_cast<QMenu *>(window);
        if (menu == nullptr || !menu->isVisible())
            continue;
        if (QAction *item = ItemNamed(menu, text))
            return menu->mapToGlobal(menu->actionGeometry(item).center());
    }
    return std::nullopt;
}

class ClickTest : public ::testing::Test {
protected:
    void SetUp() override {
        InstallMenuStyle();
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        // The menu folder: Deep/Middle/Inner holds a file, a folder and a
        // link to a folder elsewhere.
        folder.mkdir("Deep");
        folder.mkdir("Deep/Middle");
        folder.mkdir("Deep/Middle/Inner");
        folder.touch("Deep/Middle/Inner/note.txt");
        folder.mkdir("Deep/Middle/Inner/Target");
        folder.mkdir("Elsewhere");
        folder.mkdir("Elsewhere/Real folder");
        ASSERT_EQ(::symlink(folder.at("Elsewhere/Real folder").constData(),
                            folder.at("Deep/Middle/Inner/Shortcut").constData()),
                  0);
        folder.touch("apple.txt");
        spec.folder = FSSpec{folder.path()};
        title.menuSpec = &spec;
        fileManager.servicePid = 77;
    }

    void TearDown() override {
        answer.reset();
        pulledReadyMenu = nullptr;
        DestroyFolderCachedMenu(&title);
        TearDownDepthMenus();
    }

    // Clicks the title as the title does (its menu pulled for the whole
    // click) and plays `steps` once the menu is up; returns the click's status.
    OSStatus Click(QList<Step> steps, bool suppressOpen = false) {
        stepsLeft = steps;
        QElapsedTimer sincePause;
        int pause = 0;
        QTimer player;
        player.setInterval(20);
        QObject::connect(&player, &QTimer::timeout, [&] {
            if (stepsLeft.isEmpty() || FrontMenu() == nullptr ||
                (pause > 0 && sincePause.elapsed() < pause))
                return;
            const Step step = stepsLeft.takeFirst();
            pause = step.kind == Step::Pause ? step.key : 0;
            sincePause.start();
            Play(step);
        });
        player.start();
        // A menu left open by a test that went wrong is closed, not waited on.
        QTimer rescue;
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
        EXPECT_TRUE(stepsLeft.isEmpty()) << stepsLeft.size() << " steps were not played";
        return status;
    }

    static void Play(const Step &step) {
        QMenu *menu = FrontMenu();
        switch (step.kind) {
        case Step::Key:
            QTest::keyClick(menu, Qt::Key(step.key));
            break;
        case Step::Text:
            QTest::keyClicks(menu, step.text);
            break;
        case Step::Pause:
            break;
        case Step::ReleaseOn:
            // The release goes to the newest menu wherever the pointer is.
            if (const std::optional<QPoint> where = WhereIs(step.text))
                QTest::mouseRelease(menu, Qt::LeftButton, {}, menu->mapFromGlobal(*where));
            else
                ADD_FAILURE() << "no menu shows " << qPrintable(step.text);
            break;
        case Step::ReleaseOutside:
            QTest::mouseRelease(menu, Qt::LeftButton, {}, QPoint(900, 700));
            break;
        }
    }

    // Walks to the innermost folder's menu: Deep, Middle, Inner.
    static QList<Step> ToInner() {
        return {Type("d"), Key(Qt::Key_Right), Key(Qt::Key_Right), Key(Qt::Key_Right)};
    }

    // Answers the next file dialog with `path` (or cancels it when empty).
    void AnswerFileDialog(const QByteArray &path) {
        answer = std::make_unique<QTimer>();
        answer->setInterval(50);
        QObject::connect(answer.get(), &QTimer::timeout, [this, path] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            if (dialog == nullptr)
                return;
            dialogTitle = dialog->windowTitle();
            if (path.isEmpty()) {
                dialog->reject();
                return;
            }
            dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))
                ->setText(QFile::decodeName(path));
            auto *buttons = dialog->findChild<QDialogButtonBox *>();
            for (QAbstractButton *button : buttons->buttons()) {
                if (buttons->buttonRole(button) == QDialogButtonBox::AcceptRole)
                    button->click();
            }
        });
        answer->start();
    }

    TempEnvironment environment; // the file dialog keeps settings of its own
    Folder folder;
    MenuSpec spec{};
    ReadyMenu title{};
    QList<Step> stepsLeft;
    std::unique_ptr<QTimer> answer;
    QString dialogTitle;

    Installed<platform::FakeAlerts, platform::Alerts> alerts;
    Installed<platform::FakeFileManager, platform::FileManager> fileManager;
    Installed<platform::FakeFrontWindow, platform::FrontWindow> frontWindow;
    Installed<platform::FakeLauncher, platform::Launcher> launcher;
    Installed<platform::FakeLoginItems, platform::LoginItems> loginItems;
    Installed<platform::FakePointer, platform::Pointer> pointer;
};

TEST_F(ClickTest, TheKeysHeldAsTheMenuClosesDecideWhatHappensToAFileThreeLevelsDown) {
    const QByteArray note = folder.at("Deep/Middle/Inner/note.txt");
    struct Case {
        std::uint16_t modifiers;
        QList<Request> requests;
        QList<Launch> launches;
    };
    const QList<Case> cases = {
        {0, {}, {{"Default", note, {}}}},
        {cmdKey, {{"ShowItems", {note}}}, {}},
        {shiftKey, {{"ShowItemProperties", {note}}}, {}},
        {cmdKey | shiftKey, {{"ShowItems", {note}}}, {}}, // Ctrl wins
        {optionKey, {}, {{"Default", note, {}}}},
        {controlKey, {}, {{"Default", note, {}}}},
        {alphaLock | optionKey | controlKey, {}, {{"Default", note, {}}}},
    };
    for (const Case &c : cases) {
        fileManager.requests.clear();
        launcher.launches.clear();
        pointer.state.modifiers = c.modifiers;
        EXPECT_EQ(Click(ToInner() << Type("n") << Key(Qt::Key_Return)), noErr);
        EXPECT_EQ(fileManager.requests, c.requests) << "modifiers " << c.modifiers;
        EXPECT_EQ(launcher.launches, c.launches) << "modifiers " << c.modifiers;
        // The menus of the click are gone; the root menu stays cached.
        EXPECT_NE(title.cachedMenu, nullptr);
        for (int depth = 1; depth < kDepthMenuCount; ++depth)
            EXPECT_EQ(subMenuRef[depth], nullptr) << depth;
    }
}

TEST_F(ClickTest, FolderItemsAreChosenWithSpaceOrAReleaseAndLinksGiveTheirTarget) {
    // Space on the link to a folder: the folder it points to opens.
    EXPECT_EQ(Click(ToInner() << Type("s") << Key(Qt::Key_Space)), noErr);
    EXPECT_EQ(fileManager.requests,
              (QList<Request>{{"ShowFolders", {folder.at("Elsewhere/Real folder")}}}));
    EXPECT_TRUE(frontWindow.broughtToFront.isEmpty()) << "its own token brings it forward";

    // Return on a folder item opens its submenu instead; Space then chooses
    // the folder whose menu it is.
    fileManager.requests.clear();
    pointer.state.modifiers = cmdKey;
    EXPECT_EQ(Click(ToInner() << Type("t") << Key(Qt::Key_Return) << Key(Qt::Key_Left)
                              << Key(Qt::Key_Space)),
              noErr);
    EXPECT_EQ(fileManager.requests,
              (QList<Request>{{"ShowItems", {folder.at("Deep/Middle/Inner/Target")}}}));

    // The mouse let go on a folder item of the root menu, and on one deeper.
    pointer.state.modifiers = 0;
    fileManager.requests.clear();
    EXPECT_EQ(Click({ReleaseOn("Deep")}), noErr);
    EXPECT_EQ(Click({Type("d"), Key(Qt::Key_Right), ReleaseOn("Middle")}), noErr);
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"ShowFolders", {folder.at("Deep")}},
                                                    {"ShowFolders", {folder.at("Deep/Middle")}}}));

    // Let go outside every menu: nothing, and the submenus are gone.
    fileManager.requests.clear();
    launcher.launches.clear();
    EXPECT_EQ(Click(ToInner() << ReleaseOutside()), noErr);
    EXPECT_TRUE(fileManager.requests.isEmpty());
    EXPECT_TRUE(launcher.launches.isEmpty());
    EXPECT_EQ(subMenuRef[1], nullptr);
    // Escape at every depth closes the menus one by one, choosing nothing.
    EXPECT_EQ(Click(ToInner() << Key(Qt::Key_Escape) << Key(Qt::Key_Escape) << Key(Qt::Key_Escape)
                              << Key(Qt::Key_Escape)),
              noErr);
    EXPECT_TRUE(fileManager.requests.isEmpty());
}

TEST_F(ClickTest, TypingMovesToItemsByTheirFirstLettersWithoutOpeningThem) {
    folder.touch("Dune");
    folder.touch("dusk");
    folder.touch("Elsewhere.txt");
    folder.touch("\xc3\x89t\xc3\xa9.txt"); // "Été.txt"
    QStringList seen;
    bool submenuOpened = false;
    QTimer watcher;
    watcher.setInterval(2);
    QObject::connect(&watcher, &QTimer::timeout, [&] {
        QMenu *menu = FrontMenu();
        if (menu == nullptr)
            return;
        submenuOpened = submenuOpened || GetMenuID(menu) != kFirstDepthMenuID;
        if (menu->activeAction() != nullptr &&
            (seen.isEmpty() || seen.last() != menu->activeAction()->text()))
            seen.append(menu->activeAction()->text());
    });
    watcher.start();
    pointer.state.modifiers = cmdKey;
    // The same letter steps on and wraps round; after a pause, more letters
    // narrow the search from where it stands; a composed capital finds its
    // lower-case match, past the plain letter.
    EXPECT_EQ(Click({Type("d"), Pause(40), Type("d"), Pause(40), Type("d"), Pause(40), Type("d"),
                     Pause(1200), Type("d"), Pause(40), Type("u"), Pause(40), Type("s"),
                     Pause(1200), Type("\xc3\x89"), Pause(40), Key(Qt::Key_Return)}),
              noErr);
    EXPECT_EQ(seen,
              (QStringList{QStringLiteral("Deep"), QStringLiteral("Dune"), QStringLiteral("dusk"),
                           QStringLiteral("Deep"), QStringLiteral("Dune"), QStringLiteral("dusk"),
                           QString::fromUtf8("\xc3\x89t\xc3\xa9.txt")}));
    EXPECT_FALSE(submenuOpened) << "stepping onto a folder item leaves its submenu closed";
    EXPECT_EQ(fileManager.requests,
              (QList<Request>{{"ShowItems", {folder.at("\xc3\x89t\xc3\xa9.txt")}}}));
}

TEST_F(ClickTest, AFailedRequestReturnsAtOnceAndTheNextClickStillWorks) {
    fileManager.failure = connectionInvalid;
    pointer.state.modifiers = cmdKey;
    EXPECT_EQ(Click(ToInner() << Type("n") << Key(Qt::Key_Return)), connectionInvalid);
    // The menus of that click stand until the next click takes them down.
    QPointer<QMenu> left = subMenuRef[3];
    ASSERT_NE(left, nullptr);

    fileManager.failure = noErr;
    fileManager.requests.clear();
    EXPECT_EQ(Click(ToInner() << Type("n") << Key(Qt::Key_Return)), noErr);
    EXPECT_EQ(fileManager.requests,
              (QList<Request>{{"ShowItems", {folder.at("Deep/Middle/Inner/note.txt")}}}));
    EXPECT_EQ(subMenuRef[3], nullptr);
    EXPECT_TRUE(WaitFor([&] { return left == nullptr; }, 2000)) << "the old menus are freed";
}

TEST_F(ClickTest, WithOpeningSuppressedFolderItemsDoNothingButCommandsWork) {
    EXPECT_EQ(Click(ToInner() << Type("n") << Key(Qt::Key_Return), true), noErr);
    EXPECT_EQ(Click({ReleaseOn("Deep")}, true), noErr);
    EXPECT_TRUE(fileManager.requests.isEmpty());
    EXPECT_TRUE(launcher.launches.isEmpty());
    EXPECT_EQ(Click({Type("t"), Key(Qt::Key_Right), Type("o"), Key(Qt::Key_Return)}, true), noErr);
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"ShowFolders", {folder.path()}}}));
}

TEST_F(ClickTest, AddingAnItemLinksItIntoTheFolderAndTheNextClickShowsIt) {
    const QList<Step> addItem = {Type("t"), Key(Qt::Key_Right), Type("a"), Key(Qt::Key_Return)};
    const QByteArray chosen = folder.at("Elsewhere/Real folder");

    // Cancelled: nothing made, the cached menu kept.
    InitializeFolderCachedMenu(&title);
    QMenu *cached = title.cachedMenu;
    AnswerFileDialog({});
    EXPECT_EQ(Click(addItem), noErr);
    EXPECT_EQ(dialogTitle, QStringLiteral("Choose an Item"));
    EXPECT_EQ(title.cachedMenu, cached);
    EXPECT_EQ(::access(folder.at("Real folder").constData(), F_OK), -1);

    AnswerFileDialog(chosen);
    EXPECT_EQ(Click(addItem), noErr);
    char target[256] = {};
    ASSERT_GT(::readlink(folder.at("Real folder").constData(), target, sizeof target - 1), 0);
    EXPECT_STREQ(target, chosen.constData());
    EXPECT_EQ(title.cachedMenu, nullptr) << "the cached menu is dropped";

    // The next click shows the new item, a folder with its own submenu.
    answer.reset();
    EXPECT_EQ(Click({Type("r"), Key(Qt::Key_Space)}), noErr);
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"ShowFolders", {chosen}}}));
}

TEST_F(ClickTest, AddingAnItemWithoutTheFileManagerServiceOpensTheFolderOrReports) {
    const QList<Step> addItem = {Type("t"), Key(Qt::Key_Right), Type("a"), Key(Qt::Key_Return)};
    // The folder application stands in: the folder opens there, no chooser.
    fileManager.hasService = false;
    fileManager.hasAlternative = true;
    AnswerFileDialog({});
    EXPECT_EQ(Click(addItem), noErr);
    EXPECT_TRUE(dialogTitle.isEmpty()) << "no chooser shows";
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"AlternativeOpen", {folder.path()}}}));
    EXPECT_TRUE(alerts.alerts.isEmpty());

    // Neither: the missing file manager is reported, nothing else happens.
    fileManager.hasAlternative = false;
    fileManager.requests.clear();
    EXPECT_EQ(Click(addItem), noErr);
    EXPECT_TRUE(dialogTitle.isEmpty());
    EXPECT_TRUE(fileManager.requests.isEmpty());
    ASSERT_EQ(alerts.alerts.size(), 1);
    EXPECT_EQ(alerts.alerts.first().status, procNotFound);
}

TEST_F(ClickTest, OpeningTheFolderBringsTheFileManagerForward) {
    EXPECT_EQ(Click({Type("t"), Key(Qt::Key_Right), Type("o"), Key(Qt::Key_Return)}), noErr);
    EXPECT_EQ(fileManager.requests, (QList<Request>{{"ShowFolders", {folder.path()}}}));
    // Once before the request; the folder window comes forward by its token.
    EXPECT_EQ(frontWindow.broughtToFront, (QList<ProcessSerialNumber>{{77, 0}}));
}

TEST_F(ClickTest, ChoosingAnotherFolderChangesTheTitlesFolderAndForgetsTheOldRecord) {
    const QList<Step> chooseFolder = {Type("t"), Key(Qt::Key_Right), Type("c"),
                                      Key(Qt::Key_Return)};
    const QByteArray other = folder.at("Elsewhere");
    spec.folderAlias = QByteArray("old alias record");

    // Cancelled: all stays.
    InitializeFolderCachedMenu(&title);
    QMenu *cached = title.cachedMenu;
    AnswerFileDialog({});
    EXPECT_EQ(Click(chooseFolder), noErr);
    EXPECT_EQ(dialogTitle, QStringLiteral("Choose a Folder"));
    EXPECT_EQ(spec.folder.path, folder.path());
    EXPECT_EQ(spec.folderAlias, "old alias record");
    EXPECT_EQ(title.cachedMenu, cached);

    // The same folder again: the record still names it.
    AnswerFileDialog(folder.path());
    EXPECT_EQ(Click(chooseFolder), noErr);
    EXPECT_EQ(spec.folder.path, folder.path());
    EXPECT_EQ(spec.folderAlias, "old alias record");

    AnswerFileDialog(other);
    EXPECT_EQ(Click(chooseFolder), noErr);
    EXPECT_EQ(spec.folder.path, other);
    EXPECT_TRUE(spec.folderAlias.isEmpty());
    EXPECT_EQ(title.cachedMenu, nullptr);

    // The next click shows the new folder; its commands act on it.
    answer.reset();
    EXPECT_EQ(Click({Type("r"), Key(Qt::Key_Space)}), noErr);
    EXPECT_EQ(Click({Type("t"), Key(Qt::Key_Right), Type("o"), Key(Qt::Key_Return)}), noErr);
    EXPECT_EQ(fileManager.requests,
              (QList<Request>{{"ShowFolders", {folder.at("Elsewhere/Real folder")}},
                              {"ShowFolders", {other}}}));
}

// The application commands: About and Preferences show their dialogs (closed
// here as soon as they show), Quit ends the event loop it runs in.
TEST_F(ClickTest, TheApplicationCommandsShowTheirDialogsAndQuit) {
    QStringList shown;
    QTimer closer;
    closer.setInterval(50);
    QObject::connect(&closer, &QTimer::timeout, [&] {
        if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
            shown.append(QString::fromLatin1(dialog->metaObject()->className()) + u' ' +
                         dialog->windowTitle());
            dialog->reject();
        }
    });
    closer.start();
    EXPECT_EQ(Click({Type("k"), Key(Qt::Key_Right), Type("a"), Key(Qt::Key_Return)}), noErr);
    EXPECT_EQ(Click({Type("k"), Key(Qt::Key_Right), Type("p"), Key(Qt::Key_Return)}), noErr);
    ASSERT_EQ(shown.size(), 2) << qPrintable(shown.join(u'|'));
    EXPECT_TRUE(shown[0].contains(QStringLiteral("About"))) << qPrintable(shown[0]);
    EXPECT_TRUE(shown[1].contains(QStringLiteral("Preferences"))) << qPrintable(shown[1]);

    // Numbers that are no item do nothing.
    SelectKestrelMenuItem(0);
    SelectKestrelMenuItem(4);
    EXPECT_EQ(shown.size(), 2);

    // The application's own loop, as in the program: it starts afresh when it ends.
    bool quitByMenu = false;
    QTimer::singleShot(0, [&] {
        EXPECT_EQ(Click({Type("k"), Key(Qt::Key_Right), Type("q"), Key(Qt::Key_Return)}), noErr);
        quitByMenu = true;
    });
    QTimer guard;
    guard.setSingleShot(true);
    QObject::connect(&guard, &QTimer::timeout, [] { QCoreApplication::exit(1); });
    guard.start(10000);
    EXPECT_EQ(QCoreApplication::exec(), 0);
    EXPECT_TRUE(quitByMenu);
}

} // namespace
