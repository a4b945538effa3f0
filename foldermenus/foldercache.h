// Each title keeps its root folder menu until something says it is out of date;
// submenus are filled at the moment they open.
#pragma once

#include "core/types.h"

class FolderMenu;
struct ReadyMenu;

// Builds the title's root menu from its folder, caches it and watches the
// folder once it has been read (watching a folder that does not answer would
// hang as reading it does).
OSStatus InitializeFolderCachedMenu(ReadyMenu *readyMenu);

// Drops the cached root menu of one title; null means of every title. A menu
// that is on screen, or belongs to the click in progress, is taken from the
// title at once but freed only once that click is over.
void DestroyFolderCachedMenu(ReadyMenu *readyMenu);

// A change of the title's folder: message 1 (its entries changed) drops the
// cached menu; other messages are ignored.
void FolderChangeNotification(std::uint32_t message, ReadyMenu *readyMenu);

// The root menu a click on the title shows: the cached one, else one built
// now. A cached menu that cannot follow its folder is built again: one whose
// reading was abandoned, or whose folder could not be watched (it was gone,
// and may have come back).
FolderMenu *ReadyFolderMenu(ReadyMenu *readyMenu);

// A depth menu is opening: fills it from the folder item that opened it (the
// parent menu's active item). The root menu is never refilled this way.
OSStatus CarbonEventSubMenu(FolderMenu *menu);

// Releases the icons the menu's own items hold (all but the last item's) and
// disposes of the menu. Folder items hold none: theirs are shared by type.
OSStatus ClearDisposeMenu(FolderMenu *menu);

// The menus of one click (what ClickFolderMenu sets up before the menu pops up
// and tears down after): depth 0 is `rootMenu`, depths 1-9 are new menus, every
// folder item count starts at 0, and every opening refills the menu.
void SetUpDepthMenus(FolderMenu *rootMenu);
// Undoes SetUpDepthMenus: the root stays as it is, depths 1-9 are disposed of.
void TearDownDepthMenus();
