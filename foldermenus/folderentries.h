// Reading one folder for its menu: which entries show, in which order, under
// which text, and which of them lead to submenus. No widgets here: the menu
// shows this list through its model.
#pragma once

#include "core/types.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <stop_token>
#include <vector>

// Menus nest at most this deep: items of the deepest menu never lead further.
inline constexpr std::int32_t kDeepestMenu = 9;

struct FolderEntry {
    enum class Kind : std::uint8_t {
        File,         // anything that is not one of the others, broken links included
        Folder,       // a real folder (links followed), not a package
        Package,      // a folder holding an executable AppRun
        DesktopEntry, // a *.desktop file of Type Application or Link
    };
    QByteArray path;  // stored on the item; a followed link's target
    QByteArray link;  // the link the folder holds, when `path` is where it leads
    QString name;     // display name, the one that orders the items
    QString text;     // what the item shows: the name after its sort prefix
    QString iconName; // a desktop entry's Icon, or the theme icon of a special folder
    Kind kind = Kind::File;
    bool separator = false; // the shown text is exactly "-" after a sort prefix
    bool submenu = false;   // leads to the next depth's menu
};

struct FolderListing {
    std::vector<FolderEntry> entries; // in menu order
    // Entries the single read of the folder returned, hidden ones included.
    std::uint32_t found = 0;
    OSErr status = noErr; // why the folder could not be read, if it could not
};

// Reads `folder` once and returns the entries that show, ordered as the menu
// of `depth` (0-9) shows them. Links are followed only above the deepest menu.
// Only links and entries of unknown type are looked at beyond the folder's own
// list. A stop request ends the reading early with userCanceledErr.
FolderListing ReadFolderEntries(const QByteArray &folder, std::int32_t depth,
                                std::stop_token stop = {});

// The key by which display names are ordered: canonical decomposition, then
// case folding. Comparing keys as plain strings is the menu's order: case and
// accents as written do not matter, digits are not read as numbers.
QString FolderSortKey(const QString &name);

// The key by which typed text finds items: decomposed, accents dropped, case
// folded, so that "ete" finds "Été".
QString FolderFilterKey(const QString &text);

// The names a ".hidden" file hides: one per line, lines ended by LF or CR,
// taken byte for byte. An unterminated last line hides nothing, and the line
// length is a byte that wraps, so an over-long line keeps only its last part.
std::vector<QByteArray> HiddenNamesFromFile(const QByteArray &contents);

// Whether `folder` is the root of a mounted file system (a mount point, or "/").
bool IsVolumeRoot(const QByteArray &folder);
