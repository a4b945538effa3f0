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

class FolderMenu;

inline constexpr int kDepthMenuCount = 10;
// A folder not read within this time shows "Loading…" until it is.
inline constexpr int kLoadingDelayMs = 100;

// The menu of each depth; null where there is none.
extern QPointer<FolderMenu> subMenuRef[kDepthMenuCount];
// How many folder items stand at the top of each depth's menu (items 1 to n).
// Items below them (a root menu's own command items) are never touched.
extern std::uint32_t subMenuItems[kDepthMenuCount];

// Replaces the folder items of subMenuRef[depth] with the contents of
// `folderSpec`: hidden entries left out, ordered by name, sort prefixes
// removed, "-" after a prefix as a separator, icons as the settings say,
// submenus for real folders, each item's path as its data. A folder that
// shows nothing (or cannot be read) gets one item without data, the empty
// text. The folder is read away from the GUI thread; one that takes longer
// than kLoadingDelayMs shows "Loading…" until its items come. Returns the
// reading's failure, if it ended in time; nothing is reported to the user.
OSStatus BuildSubMenu(std::int32_t depth, const FSSpec *folderSpec);
