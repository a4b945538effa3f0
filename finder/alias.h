// Links: how an item is added to a menu folder.
#pragma once

#include "core/settings.h"
#include "core/types.h"

// Makes, in `folder`, a symbolic link to `item` named after it (or `name`). A
// taken name becomes "name (2)", "name (3)", ... before any extension. Reports
// nothing; the status says what went wrong.
OSErr CreateAlias(const FSSpec *item, const FSSpec *folder, const QByteArray &name = {});

// The name CreateAlias gives the link for `item` on its `attempt`-th try
// (1 = the item's own name), kept within the file system's 255 bytes.
QByteArray AliasName(const QByteArray &itemPath, int attempt);

// Follows `*spec` while it is a link: the whole chain when `resolveChains`,
// else one link. `*targetIsFolder` tells whether the item reached is a folder,
// `*wasAliased` whether a link was followed (either may be null). A broken
// link leaves `*spec` as it is and gives fnfErr; a loop, or a chain of more
// than 40 links, gives ioErr. The file system follows the links, so ".." in a
// link's target leaves the folder the link really reaches.
OSErr ResolveAliasFile(FSSpec *spec, bool resolveChains, bool *targetIsFolder, bool *wasAliased);
