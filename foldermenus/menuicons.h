// Icons of folder menu items, from the desktop's icon theme.
#pragma once

#include <QIcon>

struct FolderEntry;

// The entry's icon: "folder" for folders (the special folders' own icons for
// them: user-home, folder-music, drive-harddisk, ...), a desktop entry's Icon, else the icon
// of the MIME type its name suggests (the contents are never read). Looked up
// once per type and suffix; the style's file and folder icons stand in where
// the theme has none.
QIcon FolderEntryIcon(const FolderEntry &entry);

// Forgets every icon looked up so far (the next lookups ask the theme again).
void ClearFolderIconCache();

// Looks up, and draws once at the menus' size, the icons of folders and of the
// commonest types: the first menu then costs what every later one does, the
// MIME database and the theme already loaded.
void WarmUpFolderIcons();
