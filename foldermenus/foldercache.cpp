#include "foldermenus/foldercache.h"

#include "titles/readymenu.h"

#include <QFileSystemWatcher>
#include <QMenu>

void DestroyFolderCachedMenu(ReadyMenu *readyMenu) {
    if (readyMenu == nullptr) {
        for (ReadyMenu *title = firstReadyMenu; title != nullptr; title = title->next)
            DestroyFolderCachedMenu(title);
        return;
    }
    if (readyMenu->cachedMenu == nullptr)
        return;
    if (readyMenu->folderSubscription != nullptr)
        readyMenu->folderSubscription->deleteLater();
    // The menu may be on screen in a nested event loop: let the loop finish with it.
    readyMenu->cachedMenu->deleteLater();
    readyMenu->cachedMenu = nullptr;
}
