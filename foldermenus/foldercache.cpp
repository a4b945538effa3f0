#include "foldermenus/foldercache.h"

#include "foldermenus/buildsubmenu.h"
#include "foldermenus/foldermenu.h"
#include "foldermenus/foldermenumodel.h"
#include "resources/menus.h"
#include "titles/readymenu.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QFileSystemWatcher>
#include <QLoggingCategory>
#include <QMultiHash>
#include <QTimer>

#include <vector>

Q_DECLARE_LOGGING_CATEGORY(lcFolderEntries)

namespace {

// Menus dropped while a click may still use them: freed once no menu is up
// and no title is pulled. Deleting from inside the menu's own event loop
// (deleteLater runs there too) would pull the menu from under its caller.
std::vector<QPointer<FolderMenu>> retiredMenus;

bool MenusInUse() {
    return pulledReadyMenu != nullptr || QApplication::activePopupWidget() != nullptr;
}

void FreeMenus(std::vector<QPointer<FolderMenu>> *menus) {
    std::vector<QPointer<FolderMenu>> freed;
    freed.swap(*menus);
    for (const QPointer<FolderMenu> &menu : freed)
        delete menu.data();
}

QTimer &RetiredMenuTimer() {
    static QTimer *timer = [] {
        auto *made = new QTimer(qApp);
        made->setInterval(100);
        QObject::connect(made, &QTimer::timeout, [made] {
            if (MenusInUse())
                return;
            FreeMenus(&retiredMenus);
            made->stop();
        });
        return made;
    }();
    return *timer;
}

void DisposeMenu(FolderMenu *menu) {
    if (menu == nullptr)
        return;
    if (!MenusInUse() && !menu->isVisible()) {
        delete menu;
        return;
    }
    // The program ends with nothing in use: whatever still waits is freed.
    static const bool freedAtExit = [] {
        qAddPostRoutine([] { FreeMenus(&retiredMenus); });
        return true;
    }();
    Q_UNUSED(freedAtExit);
    retiredMenus.emplace_back(menu);
    RetiredMenuTimer().start();
}

// The menus of depths 1-9 serve one click at a time. Disposed of, they wait
// here for the next click instead of being made anew, so that a click makes no
// new windows (and leaves nothing of them behind in the toolkit).
std::vector<QPointer<FolderMenu>> sparedMenus;

FolderMenu *NewDepthMenu() {
    while (!sparedMenus.empty()) {
        const QPointer<FolderMenu> spared = sparedMenus.back();
        sparedMenus.pop_back();
        if (spared != nullptr)
            return spared;
    }
    auto *menu = new FolderMenu;
    QObject::connect(menu, &QMenu::aboutToShow, menu, [menu] { CarbonEventSubMenu(menu); });
    // The program ends with nothing in use: the spared menus go with it.
    static const bool freedAtExit = [] {
        qAddPostRoutine([] { FreeMenus(&sparedMenus); });
        return true;
    }();
    Q_UNUSED(freedAtExit);
    return menu;
}

// One watcher serves every title: a watcher of each title's own would open a
// new inotify instance at every rebuild, and closing one waits on the kernel.
QMultiHash<QString, ReadyMenu *> watchedFolders;

QFileSystemWatcher &FolderWatcher() {
    static QFileSystemWatcher *watcher = [] {
        auto *made = new QFileSystemWatcher(qApp);
        QObject::connect(made, &QFileSystemWatcher::directoryChanged, made,
                         [](const QString &folder) {
                             // Dropping a menu changes the list: go through a copy.
                             const QList<ReadyMenu *> titles = watchedFolders.values(folder);
                             for (ReadyMenu *title : titles)
                                 FolderChangeNotification(1, title);
                         });
        return made;
    }();
    return *watcher;
}

OSStatus WatchFolder(ReadyMenu *readyMenu) {
    const QString folder = QFile::decodeName(readyMenu->menuSpec->folder.path);
    QFileSystemWatcher &watcher = FolderWatcher();
    if (folder.isEmpty() || (!watcher.directories().contains(folder) && !watcher.addPath(folder))) {
        qCWarning(lcFolderEntries, "cannot watch the folder %s; its menu is read at every click",
                  qPrintable(folder));
        return fnfErr;
    }
    watchedFolders.insert(folder, readyMenu);
    readyMenu->folderSubscription = &watcher;
    return noErr;
}

// By the folder watched, which may no longer be the title's (another was chosen).
void UnwatchFolder(ReadyMenu *readyMenu) {
    for (auto watched = watchedFolders.begin(); watched != watchedFolders.end();) {
        if (watched.value() != readyMenu) {
            ++watched;
            continue;
        }
        const QString folder = watched.key();
        watched = watchedFolders.erase(watched);
        if (!watchedFolders.contains(folder) && FolderWatcher().directories().contains(folder))
            FolderWatcher().removePath(folder);
    }
    readyMenu->folderSubscription = nullptr;
}

} // namespace

OSStatus InitializeFolderCachedMenu(ReadyMenu *readyMenu) {
    auto *menu = new FolderMenu;
    LoadMenuTemplate161(menu);
    readyMenu->cachedMenu = menu;
    readyMenu->folderSubscription = nullptr;

    // The folder is watched once it has answered, now or later.
    QObject::connect(menu->model(), &FolderMenuModel::listingShown, menu,
                     [readyMenu, menu](OSErr readStatus) {
                         if (readyMenu->cachedMenu == menu && readStatus == noErr &&
                             readyMenu->folderSubscription == nullptr)
                             WatchFolder(readyMenu);
                     });
    const QPointer<FolderMenu> saved = subMenuRef[0];
    subMenuRef[0] = menu;
    subMenuItems[0] = 0;
    const OSStatus read = BuildSubMenu(0, &readyMenu->menuSpec->folder);
    subMenuRef[0] = saved;
    if (read != noErr || !menu->model()->isComplete())
        return read;
    return readyMenu->folderSubscription != nullptr ? noErr : fnfErr;
}

FolderMenu *ReadyFolderMenu(ReadyMenu *readyMenu) {
    const FolderMenu *cached = readyMenu->cachedMenu;
    const bool followsFolder =
        cached != nullptr &&
        (cached->model()->isReading() ||
         (cached->model()->isComplete() && readyMenu->folderSubscription != nullptr));
    if (!followsFolder) {
        DestroyFolderCachedMenu(readyMenu);
        InitializeFolderCachedMenu(readyMenu);
    }
    return readyMenu->cachedMenu;
}

void DestroyFolderCachedMenu(ReadyMenu *readyMenu) {
    if (readyMenu == nullptr) {
        for (ReadyMenu *title = firstReadyMenu; title != nullptr; title = title->next)
            DestroyFolderCachedMenu(title);
        return;
    }
    if (readyMenu->cachedMenu == nullptr)
        return;
    if (readyMenu->folderSubscription != nullptr)
        UnwatchFolder(readyMenu);
    FolderMenu *menu = readyMenu->cachedMenu;
    readyMenu->cachedMenu = nullptr;
    // A reading that ends later must not reach a title that may be gone.
    QObject::disconnect(menu->model(), &FolderMenuModel::listingShown, menu, nullptr);
    DisposeMenu(menu);
}

void FolderChangeNotification(std::uint32_t message, ReadyMenu *readyMenu) {
    if (message == 1)
        DestroyFolderCachedMenu(readyMenu);
}

OSStatus CarbonEventSubMenu(FolderMenu *menu) {
    if (menu == nullptr)
        return paramErr;
    const std::int32_t depth = GetMenuID(menu) - kFirstDepthMenuID;
    if (depth < 1 || depth >= kDepthMenuCount)
        return noErr;
    const FolderMenu *parent = subMenuRef[depth - 1];
    const FSSpec folder{FolderItemPath(parent, parent != nullptr ? parent->activeItem() : 0)};
    BuildSubMenu(depth, &folder);
    return noErr;
}

OSStatus ClearDisposeMenu(FolderMenu *menu) {
    if (menu == nullptr)
        return paramErr;
    // The last item keeps its icon, as it always has.
    const QList<QAction *> own = menu->actions();
    for (qsizetype i = 0; i + 1 < own.size(); ++i)
        own[i]->setIcon(QIcon());
    // A depth menu without items of its own waits for the next click.
    if (own.isEmpty() && sparedMenus.size() < std::size_t(kDepthMenuCount) && !menu->isVisible()) {
        menu->model()->clear();
        menu->setSubMenu(nullptr);
        sparedMenus.emplace_back(menu);
        return noErr;
    }
    DisposeMenu(menu);
    return noErr;
}

void SetUpDepthMenus(FolderMenu *rootMenu) {
    TearDownDepthMenus();
    SetMenuID(rootMenu, kFirstDepthMenuID);
    subMenuRef[0] = rootMenu;
    subMenuItems[0] = 0;
    for (std::int32_t depth = 1; depth < kDepthMenuCount; ++depth) {
        FolderMenu *menu = NewDepthMenu();
        SetMenuID(menu, MenuID(kFirstDepthMenuID + depth));
        subMenuRef[depth] = menu;
        subMenuItems[depth] = 0;
    }
    for (std::int32_t depth = 0; depth < kDepthMenuCount; ++depth)
        subMenuRef[depth]->setSubMenu(depth + 1 < kDepthMenuCount ? subMenuRef[depth + 1].data()
                                                                  : nullptr);
}

void TearDownDepthMenus() {
    for (std::int32_t depth = 1; depth < kDepthMenuCount; ++depth) {
        if (subMenuRef[depth] != nullptr)
            ClearDisposeMenu(subMenuRef[depth]);
        subMenuRef[depth] = nullptr;
        subMenuItems[depth] = 0;
    }
}
