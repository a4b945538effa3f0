// The menus of one click, from the moment the title's menu pops up until the
// last of them closes. The folder menus handle themselves; the two command
// menus (224, 225) are the toolkit's own and hang off the root menu's own
// items. Over those the pointer still reaches the folder menus beneath, Left
// goes back, Alt or Super held change nothing, and a press dragged from the
// title and let go away from every menu closes them all.
#pragma once

#include "foldermenus/itemcontextmenu.h"
#include "resources/menus.h"

#include <QPoint>

#include <cstdint>
#include <optional>

class FolderMenu;

struct MenuSelection {
    MenuID menu = 0;        // 0 when nothing was chosen
    std::uint16_t item = 0; // from 1
    // An entry of the item's context menu, and the files it was taken for;
    // nothing when the item itself was chosen.
    std::optional<ItemCommandChoice> command;
    MenuItemFiles files;
};

// Pops `rootMenu` (and the depth menus below it, subMenuRef) up with its
// top-left corner at the global point `where`, its first item highlighted
// when `forKeyboard`; returns what was chosen once every menu of the click
// has closed. A folder item's context menu, a drag out of the menus and a
// drop of files on a folder item happen meanwhile; after the last two the
// menus close with nothing chosen.
MenuSelection PopUpFolderMenu(FolderMenu *rootMenu, QPoint where, bool forKeyboard = false);
