// What the context menu of a folder item does with it, beyond opening,
// revealing and showing properties: opening it with a chosen application, a
// terminal in a folder, copying its path, the trash, and taking it out of a
// title's menu. Each reports its own failure through TestError, naming the item.
#pragma once

#include "core/types.h"

#include <QByteArray>

#include <cstdint>

enum class ItemCommand : std::uint8_t {
    Open,
    OpenWith,      // with the application given
    OpenWithOther, // with one chosen from every application
    OpenInTerminal,
    ShowInFolder,
    Properties,
    CopyPath,
    MoveToTrash,
    RemoveFromMenu,
};

// The files behind one folder item.
struct MenuItemFiles {
    QByteArray path;  // what the item stands for: where a link leads
    QByteArray entry; // what its folder holds: the link itself, for a link
    bool isFolder = false;
};

// Whether the item's context menu offers `command`. Opening, revealing,
// properties and copying are offered for every item, a terminal for folders;
// the trash never for a title's folder, a folder that holds one or the home
// folder; "Remove from Menu" only for an entry that lies in a title's folder.
// Decided from the names alone: nothing on disk is looked at.
bool IsItemCommandOffered(ItemCommand command, const MenuItemFiles &item);

// Carries out one of the commands other than Open, ShowInFolder and
// Properties, which go to the file manager as a choice does. `application`
// is the desktop file id for OpenWith.
void DoItemCommand(ItemCommand command, const MenuItemFiles &item,
                   const QByteArray &application = {});

// Opens `path` with the application `id`. A launcher that is not trusted is
// handed to an application that says it opens launchers (and so may run it)
// only once the user has said so, as opening it would ask.
OSErr OpenWithApplication(const QByteArray &path, const QByteArray &id, bool makeDefault);
// Lets the user choose from every application, then opens `path` with it.
void OpenWithChosenApplication(const QByteArray &path);
