// What a click on a folder title does: its menu pops up, the user walks the
// submenus (filled as they open) and the chosen item is acted on: a folder
// item is opened, revealed or shown in a properties window by the file
// manager; a command item runs.
#pragma once

#include "core/types.h"

#include <QPoint>

#include <cstdint>

struct ReadyMenu;

// Pops up the title's folder menu with its top-left corner at the global point
// `where` (its first item highlighted when `forKeyboard`), tracks it and acts
// on the choice. The modifier keys held once the menu has closed decide what
// happens to a folder item: Ctrl reveals it, else Shift shows its properties,
// else it opens; an entry of its context menu says so itself. With
// `suppressOpen` folder items are not acted on (the command items still
// work). A failed file-manager request returns its status at once; the menus
// of the click are then taken down by the next click.
OSStatus ClickFolderMenu(QPoint where, ReadyMenu *readyMenu, bool suppressOpen,
                         bool forKeyboard = false);

// An item of the application commands menu: About, Preferences, a new title
// for a folder, removing the title whose menu is open (pulledReadyMenu; never
// the last title) and, as the last item, Quit. Other numbers do nothing.
void SelectKestrelMenuItem(std::uint16_t item);

// An item of the folder commands menu, for the title's folder: 1 adds an item
// (a link made in the folder), 2 opens the folder in the file manager, 3
// chooses another folder for the title. Other numbers do nothing.
void SelectFolderCommandsMenuItem(ReadyMenu *readyMenu, std::uint16_t item);
