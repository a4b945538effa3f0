// Dragging an item out of an open menu: the drag of its file, as a file
// manager starts one, so that it drops into other programs (and on folder
// items of the menus themselves).
#pragma once

#include <Qt>

class FolderMenu;

// Drags folder item `item` of `menu` until it is dropped or given up;
// returns what the drop did (IgnoreAction for none, or an item that names
// no file). The file travels as its address (text/uri-list) and its path as
// text; copying, moving and linking are offered, copying first.
Qt::DropAction DragItemOut(FolderMenu *menu, int item);
