// The menus of one click, from the moment the title's menu pops up until the
// last of them closes. The folder menus handle themselves; the two command
// menus (224, 225) are the toolkit's own and hang off the root menu's own
// items. Over those the pointer still reaches the folder menus beneath, Left
// goes back, Alt or Super held change nothing, and a press dragged from the
// title and let go away from every menu closes them all.
#pragma once

#include "resources/menus.h"

#include <QPoint>

#include <cstdint>

class FolderMenu;

struct MenuSelection {
    MenuID menu = 0;        // 0 when nothing was chosen
    std::uint16_t item = 0; // from 1
};

// Pops `rootMenu` (and the depth menus below it, subMenuRef) up with its
// top-left corner at the global point `where`; returns what was chosen once
// every menu of the click has closed.
MenuSelection PopUpFolderMenu(FolderMenu *rootMenu, QPoint where);
