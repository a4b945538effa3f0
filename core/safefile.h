// Opening the small files that other programs and unpacked archives leave in
// the folders the menus reach: desktop entries, ".hidden" lists, the
// preferences file. None of them may block the program or flood its memory.
#pragma once

#include "core/types.h"

#include <QByteArray>

// No real file of these kinds comes near this size; a larger one counts as
// unreadable.
inline constexpr qint64 kSmallFileLimit = 1024 * 1024;

// Opens the regular file that `path` names, read-only, for a file descriptor
// the caller closes. Links are followed by the file system (a loop fails);
// the final target is opened without following a link and without waiting,
// so a pipe or a device cannot hold the program up. -1 with `*err` set when
// it is missing (fnfErr), not a regular file (notAFileErr), larger than
// `limit` bytes (fsDataTooBigErr) or cannot be opened.
int OpenRegularFile(const QByteArray &path, qint64 limit, OSErr *err);

// The whole contents of such a file, read through OpenRegularFile. A file
// that grows past `limit` while it is read counts as too big.
OSErr ReadRegularFile(const QByteArray &path, qint64 limit, QByteArray *contents);
