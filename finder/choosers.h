// The standard choosing dialogs: a folder for a menu, any item to add to one.
#pragma once

#include "core/settings.h"

// Shows the folder chooser starting at `*folder`. On a choice `*folder` becomes
// the chosen folder, links followed, and the result is true; cancel or an
// error leave it unchanged and give false.
bool SelectNewFolder(FSSpec *folder);
// Shows the item chooser (files, folders, application bundles as single items).
// On a choice `*object` becomes the chosen item itself, a link not followed.
bool SelectAnObject(FSSpec *object);
