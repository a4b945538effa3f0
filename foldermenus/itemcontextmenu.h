// The context menu of a folder item: what can be done with the item besides
// choosing it. It is made when asked for, its "Open With" submenu when that
// opens, so that it costs the folder menus nothing.
#pragma once

#include "finder/itemcommands.h"

#include <QPoint>

#include <functional>

class FolderMenu;
class QMenu;

struct ItemCommandChoice {
    ItemCommand command = ItemCommand::Open;
    QByteArray application; // the desktop file id, for OpenWith
};

// The files behind folder item `item` of `menu`; an empty path for an item
// that names no file.
MenuItemFiles FolderItemFiles(const FolderMenu *menu, int item);

// Makes the context menu of `files` (its entries as IsItemCommandOffered
// says, each with a mnemonic); `chosen` is called with the entry the user
// takes. The caller pops it up; it deletes itself once closed.
QMenu *NewItemContextMenu(const MenuItemFiles &files,
                          std::function<void(const ItemCommandChoice &)> chosen);
