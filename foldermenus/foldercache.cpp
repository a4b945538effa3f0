#include "foldermenus/foldercache.h"

#include "foldermenus/buildsubmenu.h"
#include "resources/menus.h"
#include "titles/readymenu.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QFileSystemWatcher>
#include <QLoggingCategory>
#include <QMenu>
#include <QTimer>

#include <vector>

Q_DECLARE_LOGGING_CATEGORY(lcFolderEntries)

namespace {

// Menus dropped while a click may still use them: freed once no menu is up
// and no title is pulled. Deleting from inside the menu's own event loop
// (deleteLater runs there too) would pull the menu from under its caller.
std::vector<QPointer<QMenu>> retiredMenus;

bool MenusInUse() {
    return pulledReadyMenu != nullptr || QApplication::activePopupWidget() != nullptr;
}

QTimer &RetiredMenuTimer();

void FreeRetiredMenus() {
    if (MenusInUse())
        return;
    std::vector<QPointer<QMenu>> retired;
    retired.swap(retiredMenus);
    for (const QPointer<QMenu> &menu : retired)
        delete menu.data();
    RetiredMenuTimer().stop();
}

QTimer &RetiredMenuTimer() {
    static QTimer *timer = [] {
        auto *made = new QTimer(qApp);
        made->setInterval(100);
        QObject::connect(made, &QTimer::timeout, FreeRetiredMenus);
        return made;
    }();
    return *timer;
}

// The program ends with nothing in use: whatever still waits is freed.
void FreeRetiredMenusAtExit() {
    std::vector<QPointer<QMenu>> retired;
    retired.swap(retiredMenus);
    for (const QPointer<QMenu> &menu : retired)
        delete menu.data();
}

void DisposeMenu(QMenu *menu) {
    if (menu == nullptr)
        return;
    if (!MenusInUse() && !menu->isVisible()) {
        delete menu;
        return;
    }
    static const bool freedAtExit = [] {
        qAddPostRoutine(FreeRetiredMenusAtExit);
        return true;
    }();
    Q_UNUSED(freedAtExit);
    retiredMenus.emplace_back(menu);
    RetiredMenuTimer().start();
}

// The per-click state: the connections that refill menus as they open and
// swap shared submenus, and which item opened each depth's menu.
std::vector<QMetaObject::Connection> depthConnections;
QPointer<QAction> openedBy[kDepthMenuCount];

constexpr const char *kTwinProperty = "kestrelTwinMenu";

QMenu *TwinOf(const QMenu *menu) {
    return qobject_cast<QMenu *>(menu->property(kTwinProperty).value<QObject *>());
}

// A folder item is hovered: if its submenu stands open for a sibling, the item
// moves to the depth's other menu, which then opens (and fills) afresh.
void FolderItemHovered(QAction *item) {
    QMenu *subMenu = item->menu();
    const std::int32_t depth = GetMenuID(subMenu) - kFirstDepthMenuID;
    if (depth < 1 || depth >= kDepthMenuCount || !subMenu->isVisible() || openedBy[depth] == item)
        return;
    if (QMenu *twin = TwinOf(subMenu))
        item->setMenu(twin);
}

void WatchDepthMenu(QMenu *menu) {
    depthConnections.push_back(
        QObject::connect(menu, &QMenu::aboutToShow, menu, [menu] { CarbonEventSubMenu(menu); }));
    depthConnections.push_back(QObject::connect(menu, &QMenu::hovered, menu, FolderItemHovered));
}

QMenu *NewDepthMenu(std::int32_t depth) {
    auto *menu = new QMenu;
    SetMenuID(menu, MenuID(kFirstDepthMenuID + depth));
    return menu;
}

} // namespace

OSStatus InitializeFolderCachedMenu(ReadyMenu *readyMenu) {
    QMenu *menu = NewMenuFromTemplate161();
    readyMenu->cachedMenu = menu;
    readyMenu->folderSubscription = nullptr;

    // The cached menu outlives any click: its folder items get the submenu of
    // each click when that click sets up its menus, never one of this moment.
    const QPointer<QMenu> saved = subMenuRef[0];
    const QPointer<QMenu> savedNext = subMenuRef[1];
    subMenuRef[0] = menu;
    subMenuRef[1] = nullptr;
    subMenuItems[0] = 0;
    BuildSubMenu(0, &readyMenu->menuSpec->folder);
    subMenuRef[0] = saved;
    subMenuRef[1] = savedNext;

    const QByteArray &folder = readyMenu->menuSpec->folder.path;
    auto *watcher = new QFileSystemWatcher;
    if (folder.isEmpty() || !watcher->addPath(QFile::decodeName(folder))) {
        qCWarning(lcFolderEntries,
                  "cannot watch the folder %s; its menu is kept until "
                  "something else drops it",
                  qPrintable(QFile::decodeName(folder)));
        delete watcher;
        return fnfErr;
    }
    QObject::connect(watcher, &QFileSystemWatcher::directoryChanged, watcher,
                     [readyMenu] { FolderChangeNotification(1, readyMenu); });
    readyMenu->folderSubscription = watcher;
    return noErr;
}

void DestroyFolderCachedMenu(ReadyMenu *readyMenu) {
    if (readyMenu == nullptr) {
        for (ReadyMenu *title = firstReadyMenu; title != nullptr; title = title->next)
            DestroyFolderCachedMenu(title);
        return;
    }
    if (readyMenu->cachedMenu == nullptr)
        return;
    if (readyMenu->folderSubscription != nullptr) {
        // This may run inside the watcher's own signal: it is freed afterwards.
        readyMenu->folderSubscription->disconnect();
        readyMenu->folderSubscription->deleteLater();
        readyMenu->folderSubscription = nullptr;
    }
    QMenu *menu = readyMenu->cachedMenu;
    readyMenu->cachedMenu = nullptr;
    DisposeMenu(menu);
}

void FolderChangeNotification(std::uint32_t message, ReadyMenu *readyMenu) {
    if (message == 1)
        DestroyFolderCachedMenu(readyMenu);
}

OSStatus CarbonEventSubMenu(QMenu *menu) {
    if (menu == nullptr)
        return paramErr;
    const std::int32_t depth = GetMenuID(menu) - kFirstDepthMenuID;
    if (depth < 1 || depth >= kDepthMenuCount)
        return noErr;
    if (subMenuRef[depth] != menu) {
        // The depth's other menu: its folder items are all it holds.
        subMenuRef[depth] = menu;
        subMenuItems[depth] = std::uint32_t(menu->actions().size());
    }
    QMenu *parent = subMenuRef[depth - 1];
    QAction *item = parent != nullptr ? parent->activeAction() : nullptr;
    openedBy[depth] = item;
    const FSSpec folder{FolderItemPath(item)};
    BuildSubMenu(depth, &folder);
    return noErr;
}

OSStatus ClearDisposeMenu(QMenu *menu) {
    if (menu == nullptr)
        return paramErr;
    const QList<QAction *> items = menu->actions();
    // The last item keeps its icon, as it always has.
    for (qsizetype i = 0; i + 1 < items.size(); ++i) {
        if (!items[i]->icon().isNull())
            items[i]->setIcon(QIcon());
    }
    if (QMenu *twin = TwinOf(menu)) {
        twin->setProperty(kTwinProperty, QVariant());
        DisposeMenu(twin);
    }
    DisposeMenu(menu);
    return noErr;
}

void SetUpDepthMenus(QMenu *rootMenu) {
    TearDownDepthMenus();
    SetMenuID(rootMenu, kFirstDepthMenuID);
    subMenuRef[0] = rootMenu;
    subMenuItems[0] = 0;
    for (std::int32_t depth = 1; depth < kDepthMenuCount; ++depth) {
        QMenu *menu = NewDepthMenu(depth);
        QMenu *twin = NewDepthMenu(depth);
        menu->setProperty(kTwinProperty, QVariant::fromValue<QObject *>(twin));
        twin->setProperty(kTwinProperty, QVariant::fromValue<QObject *>(menu));
        subMenuRef[depth] = menu;
        subMenuItems[depth] = 0;
        WatchDepthMenu(twin);
    }
    for (std::int32_t depth = 0; depth < kDepthMenuCount; ++depth) {
        WatchDepthMenu(subMenuRef[depth]);
        openedBy[depth] = nullptr;
    }
    AttachSubMenus(rootMenu, subMenuRef[1]);
}

void TearDownDepthMenus() {
    for (const QMetaObject::Connection &connection : depthConnections)
        QObject::disconnect(connection);
    depthConnections.clear();
    for (std::int32_t depth = 1; depth < kDepthMenuCount; ++depth) {
        if (subMenuRef[depth] != nullptr)
            ClearDisposeMenu(subMenuRef[depth]);
        subMenuRef[depth] = nullptr;
        subMenuItems[depth] = 0;
    }
}
