// A title at the left end of the top bar: one per configured left-hand menu.
#pragma once

#include "core/settings.h"
#include "core/types.h"

class QMenu;
class QWidget;
class QFileSystemWatcher;

struct ReadyMenu {
    ReadyMenu *next;
    MenuSpec *menuSpec;        // not owned: the MenuSpec list owns it
    QMenu *cachedMenu;         // the title's root folder menu; null until first needed
    QWidget *window;           // the title window; owned
    Rect titleRect;            // window-local; a left-hand title's area starts 10 pixels in
    bool hoverHidden;          // hidden by the hover rule at the last timer tick
    QFileSystemWatcher *folderSubscription; // watches the folder of cachedMenu
};

extern ReadyMenu *firstReadyMenu;
extern ReadyMenu *pulledReadyMenu; // the title whose menu is open, or null

// The first title whose window is `window`, or null.
ReadyMenu *FindReadyMenu(const QWidget *window);
