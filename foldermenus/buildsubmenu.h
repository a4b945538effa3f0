// Turning the contents of one folder into the items of one menu.
//
// The menus of one click, by depth: 0 is the clicked title's root menu, 1 to 9
// the nested submenus (menu ID 256 + depth). Every folder item of depth d leads
// to the menu of depth d + 1, which is refilled each time it opens.
#pragma once

#include "core/settings.h"
#include "core/types.h"

#include <QPointer>

#include <cstdint>

class QAction;
class QMenu;

inline constexpr int kDepthMenuCount = 10;

// The menu of each depth; null where there is none.
extern QPointer<QMenu> subMenuRef[kDepthMenuCount];
// How many folder items stand at the top of each depth's menu (items 1 to n).
// Items below them (a root menu's own command items) are never touched.
extern std::uint32_t subMenuItems[kDepthMenuCount];

// Replaces the folder items of subMenuRef[depth] with the contents of
// `folderSpec`: hidden entries left out, ordered by name, sort prefixes
// removed, "-" after a prefix as a separator, icons as the settings say,
// submenus for real folders, each item's path as its data. A folder that
// shows nothing (or cannot be read) gets one item without data, the empty
// text. Returns the first failure; nothing is reported to the user.
// Fill a menu only while it is hidden (as it is on its way to opening): an
// open menu lays itself out again for every item taken out or put in.
OSStatus BuildSubMenu(std::int32_t depth, const FSSpec *folderSpec);

// The path stored on a folder item; empty for the placeholder and for items
// that are not folder items.
QByteArray FolderItemPath(const QAction *item);

// Folder items of `menu` that lead to a submenu, in menu order. Their submenu
// is set by AttachSubMenus when the menu of the next depth exists.
QList<QAction *> HierarchicalItems(const QMenu *menu);
// Points every hierarchical item of `menu` at `subMenu`.
void AttachSubMenus(const QMenu *menu, QMenu *subMenu);

// Menu texts carry '&' as mnemonic marks and a tab before a shortcut: a name
// is shown as written by doubling the one and replacing the other.
QString MenuItemTextFor(const QString &name);
