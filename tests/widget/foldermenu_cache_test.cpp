// The cached root menu of a title, the menus of a click, and long menus.
#include "foldermenus/buildsubmenu.h"
#include "foldermenus/foldercache.h"
#include "foldermenus/menustyle.h"
#include "resources/menus.h"
#include "tests/support/desktopsession.h"
#include "tests/unit/foldermenu_testfolder.h"
#include "titles/readymenu.h"

#include <QAction>
#include <QApplication>
#include <QFileSystemWatcher>
#include <QMenu>
#include <QScreen>
#include <QStyle>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

namespace {

// One title standing in the title list for the length of a test.
struct Title {
    explicit Title(const QByteArray &folder) {
        spec.folder = FSSpec{folder};
        record.menuSpec = &spec;
        record.next = firstReadyMenu;
        firstReadyMenu = &record;
    }
    ~Title() {
        DestroyFolderCachedMenu(&record);
        firstReadyMenu = record.next;
    }
    MenuSpec spec{};
    ReadyMenu record{};
};

QStringList Texts(const QMenu *menu) {
    QStringList texts;
    for (const QAction *item : menu->actions())
        texts.append(item->text());
    return texts;
}

QAction *ItemNamed(const QMenu *menu, const QString &text) {
    for (QAction *item : menu->actions()) {
        if (item->text() == text)
            return item;
    }
    return nullptr;
}

TEST(FolderCache, AChangeInTheFolderDropsTheMenuAndTheNextOneShowsIt) {
    Folder folder;
    folder.touch("first");
    Title title(folder.path());
    ASSERT_EQ(InitializeFolderCachedMenu(&title.record), noErr);
    QPointer<QMenu> menu = title.record.cachedMenu;
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(GetMenuID(menu), kRootMenuTemplateID);
    // Folder items first, then the template's own separator and command items.
    ASSERT_EQ(menu->actions().size(), 4);
    EXPECT_EQ(menu->actions()[0]->text(), QStringLiteral("first"));
    EXPECT_TRUE(menu->actions()[1]->isSeparator());
    EXPECT_EQ(menu->actions()[2]->menu(), FolderCommandsMenu());
    EXPECT_EQ(menu->actions()[3]->menu(), ApplicationCommandsMenu());
    ASSERT_NE(title.record.folderSubscription, nullptr);

    folder.touch("second");
    EXPECT_TRUE(WaitFor([&] { return title.record.cachedMenu == nullptr; }, 5000));
    EXPECT_TRUE(WaitFor([&] { return menu == nullptr; }, 2000)); // nothing shows it: freed
    EXPECT_EQ(title.record.folderSubscription, nullptr);

    ASSERT_EQ(InitializeFolderCachedMenu(&title.record), noErr);
    EXPECT_EQ(Texts(title.record.cachedMenu).mid(0, 2),
              (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
}

TEST(FolderCache, DroppingEveryTitleAndTitlesWithoutMenus) {
    Folder one;
    Folder two;
    Title first(one.path());
    Title second(two.path());
    ASSERT_EQ(InitializeFolderCachedMenu(&first.record), noErr);
    ASSERT_EQ(InitializeFolderCachedMenu(&second.record), noErr);
    DestroyFolderCachedMenu(nullptr); // what a volume coming or going does
    EXPECT_EQ(first.record.cachedMenu, nullptr);
    EXPECT_EQ(second.record.cachedMenu, nullptr);

    // A title without a cached menu is left alone, its subscription included.
    QFileSystemWatcher watcher;
    first.record.folderSubscription = &watcher;
    watcher.addPath(QFile::decodeName(one.path()));
    DestroyFolderCachedMenu(&first.record);
    EXPECT_EQ(first.record.folderSubscription, &watcher);
    EXPECT_EQ(watcher.directories().size(), 1);
    first.record.folderSubscription = nullptr;

    // A folder that cannot be watched still gives a menu (kept until dropped).
    Title missing(one.at("missing"));
    EXPECT_NE(InitializeFolderCachedMenu(&missing.record), noErr);
    ASSERT_NE(missing.record.cachedMenu, nullptr);
    EXPECT_EQ(missing.record.folderSubscription, nullptr);
    EXPECT_EQ(missing.record.cachedMenu->actions().first()->text(), EmptyFolderText());
}

TEST(FolderCache, AMenuOnScreenOutlivesItsFolderChanging) {
    Folder folder;
    folder.touch("item");
    Title title(folder.path());
    ASSERT_EQ(InitializeFolderCachedMenu(&title.record), noErr);
    QPointer<QMenu> menu = title.record.cachedMenu;
    bool droppedWhileOpen = false;
    bool aliveWhileOpen = false;
    QTimer::singleShot(50, [&] {
        folder.touch("added");
        // Still inside the menu's own loop: the notification arrives here.
        droppedWhileOpen = WaitFor([&] { return title.record.cachedMenu == nullptr; }, 5000);
        QTest::qWait(300);
        aliveWhileOpen = menu != nullptr && menu->isVisible();
        if (menu != nullptr)
            menu->close();
    });
    menu->exec(QPoint(10, 10));
    EXPECT_TRUE(droppedWhileOpen);
    EXPECT_TRUE(aliveWhileOpen);
    ASSERT_NE(menu, nullptr); // whoever popped it up can still read the chosen item
    EXPECT_EQ(menu->actions().first()->text(), QStringLiteral("item"));
    EXPECT_TRUE(WaitFor([&] { return menu == nullptr; }, 2000));
}

TEST(FolderCache, AMenuDroppedDuringAClickIsFreedAfterIt) {
    // A command of the menu (adding an item, say) drops it after the menu has
    // closed but while the click is still being handled.
    Folder folder;
    Title title(folder.path());
    ASSERT_EQ(InitializeFolderCachedMenu(&title.record), noErr);
    QPointer<QMenu> menu = title.record.cachedMenu;
    pulledReadyMenu = &title.record;
    DestroyFolderCachedMenu(&title.record);
    EXPECT_EQ(title.record.cachedMenu, nullptr);
    QTest::qWait(300);
    EXPECT_NE(menu, nullptr);
    pulledReadyMenu = nullptr;
    EXPECT_TRUE(WaitFor([&] { return menu == nullptr; }, 2000));
}

TEST(FolderCache, ClearDisposeMenuReleasesEveryIconButTheLast) {
    QObject owner; // the items outlive the menu so that their icons can be seen
    const QIcon icon = QApplication::style()->standardIcon(QStyle::SP_FileIcon);
    ASSERT_FALSE(icon.isNull());
    QList<QAction *> items;
    QPointer<QMenu> menu = new QMenu;
    for (int i = 0; i < 3; ++i) {
        items.append(new QAction(icon, QStringLiteral("item"), &owner));
        menu->addAction(items.last());
    }
    EXPECT_EQ(ClearDisposeMenu(menu), noErr);
    EXPECT_EQ(menu, nullptr);
    EXPECT_TRUE(items[0]->icon().isNull());
    EXPECT_TRUE(items[1]->icon().isNull());
    EXPECT_FALSE(items[2]->icon().isNull());

    QPointer<QMenu> single = new QMenu;
    auto *only = new QAction(icon, QStringLiteral("only"), &owner);
    single->addAction(only);
    ClearDisposeMenu(single);
    EXPECT_FALSE(only->icon().isNull());
}

// The pointer going straight from one folder item to its sibling: the open
// submenu must show the sibling's folder, not stay with the first one.
TEST(FolderCache, MovingBetweenSiblingFoldersShowsEachFolder) {
    InstallMenuStyle();
    Folder folder;
    folder.mkdir("A");
    folder.touch("A/inA");
    folder.mkdir("B");
    folder.touch("B/inB");
    folder.mkdir("C");
    folder.touch("C/inC");
    Title title(folder.path());
    InitializeFolderCachedMenu(&title.record);
    QMenu *root = title.record.cachedMenu;
    SetUpDepthMenus(root);
    root->popup(QPoint(0, 0));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(root));

    const auto openSubmenu = [] {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            auto *menu = qobject_cast<QMenu *>(widget);
            if (menu != nullptr && menu->isVisible() && GetMenuID(menu) == kFirstDepthMenuID + 1)
                return menu;
        }
        return static_cast<QMenu *>(nullptr);
    };
    const auto shows = [&](const QString &text) {
        QMenu *open = openSubmenu();
        return open != nullptr && Texts(open) == QStringList{text};
    };
    for (const char *name : {"A", "B", "C", "A", "C"}) {
        QAction *item = ItemNamed(root, QString::fromLatin1(name));
        ASSERT_NE(item, nullptr);
        QTest::mouseMove(root, root->actionGeometry(item).center());
        EXPECT_TRUE(
            WaitFor([&] { return shows(QStringLiteral("in") + QLatin1String(name)); }, 3000))
            << "hovering " << name << " shows "
            << qPrintable(openSubmenu() ? Texts(openSubmenu()).join(u',') : QStringLiteral("-"));
    }
    root->hide();
    TearDownDepthMenus();
}

TEST(FolderCache, EveryItemOfALongMenuCanBeReached) {
    InstallMenuStyle();
    Folder folder;
    for (int i = 0; i < 3000; ++i)
        folder.touch(QByteArray::number(100000 + i));
    Title title(folder.path());
    InitializeFolderCachedMenu(&title.record);
    QMenu *menu = title.record.cachedMenu;
    menu->popup(QPoint(0, 0));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(menu));
    const QRect screen = menu->screen()->availableGeometry();
    EXPECT_LE(menu->height(), screen.height());
    // One column: every item stands at the same left edge.
    const QList<QAction *> items = menu->actions();
    const int left = menu->actionGeometry(items.first()).left();
    for (QAction *item : {items[1000], items[2999], items.last()})
        EXPECT_EQ(menu->actionGeometry(item).left(), left);

    // The keyboard walks to the last folder item and scrolls it into view.
    QTest::keyClick(menu, Qt::Key_End);
    for (int i = 0; i < 2; ++i) // the two command items below the separator
        QTest::keyClick(menu, Qt::Key_Up);
    QAction *last = items[2999];
    EXPECT_EQ(last->text(), QStringLiteral("102999"));
    EXPECT_EQ(menu->activeAction(), last);
    EXPECT_TRUE(menu->rect().intersects(menu->actionGeometry(last)));
    EXPECT_FALSE(menu->rect().intersects(menu->actionGeometry(items.first())));

    // The mouse wheel scrolls back to the top, an item at a time.
    for (int i = 0; i < 4000 && !menu->rect().contains(menu->actionGeometry(items.first())); ++i) {
        QWheelEvent wheel(QPointF(20, 20), menu->mapToGlobal(QPointF(20, 20)), QPoint(),
                          QPoint(0, 120), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(menu, &wheel);
    }
    EXPECT_TRUE(menu->rect().contains(menu->actionGeometry(items.first())));
    menu->hide();
}

} // namespace
