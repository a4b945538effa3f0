// The program's menus and menu texts: the root menu template, the two command
// menus every folder menu leads to, and the text of an empty folder's item.
//
// Every menu of the program carries a menu ID, kept on the QMenu as the dynamic
// property "kestrelMenuID" (SetMenuID/GetMenuID). Items are numbered from 1:
// item n of a menu is its n-th action.
#pragma once

#include <QString>

#include <cstdint>

class QMenu;

using MenuID = std::int16_t;

enum : MenuID {
    kRootMenuTemplateID = 161,        // a title's root menu; folder items go above its own
    kApplicationCommandsMenuID = 224, // About, Preferences, the titles, Quit
    kFolderCommandsMenuID = 225,      // add an item, open the folder, choose another folder
    kFirstDepthMenuID = 256,          // the menus of a click: 256 + depth, depth 0-9
};

// Items of the application commands menu (separators count). Quit is always
// the last item, whatever its number.
enum : std::uint16_t {
    kAboutItem = 1,
    kPreferencesItem = 2,
    kNewTitleItem = 4,
    kRemoveTitleItem = 5,
    kQuitItem = 7,
};
// Items of the folder commands menu.
enum : std::uint16_t { kAddItemItem = 1, kOpenFolderItem = 2, kChooseFolderItem = 3 };

void SetMenuID(QMenu *menu, MenuID id);
// 0 for a menu that was given no ID (or null).
MenuID GetMenuID(const QMenu *menu);

// Makes menus 224 and 225, once; later calls do nothing. They live until the
// application object goes.
void LoadCommandMenus();
QMenu *ApplicationCommandsMenu(); // null before LoadCommandMenus
QMenu *FolderCommandsMenu();      // null before LoadCommandMenus

// Makes `menu` a root menu (ID 161) with its own items: a separator and the
// two items that lead to the command menus. Folder items go above them.
// Loads the command menus if needed.
void LoadMenuTemplate161(QMenu *menu);

// The text of the single item of a menu whose folder shows nothing.
QString EmptyFolderText();
// The text of the single item of a menu whose folder is still being read.
QString LoadingFolderText();
// What a menu shows when nothing matches the text typed into it.
QString NoMatchingItemsText();
