// Each title keeps its root folder menu until something says it is out of date;
// submenus are filled at the moment they open.
#pragma once

#include "core/types.h"

class QMenu;
struct ReadyMenu;

// Builds the title's root menu from its folder, caches it and watches the folder.
OSStatus InitializeFolderCachedMenu(ReadyMenu *readyMenu);

// Drops the cached root menu of one title; null means of every title. A menu
// that is on screen, or belongs to the click in progress, is taken from the
// title at once but freed only once that click is over.
void DestroyFolderCachedMenu(ReadyMenu *readyMenu);

// A change of the title's folder: message 1 (its entries changed) drops the
// cached menu; other messages are ignored.
void FolderChangeNotification(std::uint32_t message, ReadyMenu *readyMenu);

// A depth menu is opening: fills it from the folder item that opened it (the
// parent menu's active item). The root menu is never refilled this way.
OSStatus CarbonEventSubMenu(QMenu *menu);

// Releases the icons of the menu's items (all but the last) and disposes of it.
OSStatus ClearDisposeMenu(QMenu *menu);

// The menus of one click (what ClickFolderMenu sets up before the menu pops up
// and tears down after): depth 0 is `rootMenu`, depths 1-9 are new menus, every
// folder item count starts at 0, and every opening refills the menu. Each depth
// below the root has a second menu: hovering a folder item whose submenu is
// already open for a sibling moves the item to the other one, so the submenu
// really opens again and shows this item's folder.
void SetUpDepthMenus(QMenu *rootMenu);
// Undoes SetUpDepthMenus: the root stays as it is, depths 1-9 are disposed of.
void TearDownDepthMenus();
