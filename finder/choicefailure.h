// Saying why a choice could not be carried out, in plain words that name the
// item, and offering what can be done instead.
#pragma once

#include "core/settings.h"
#include "core/types.h"
#include "finder/finderevents.h"

#include <QString>

// The item's name as messages show it: the last part of its path.
QString ItemName(const QByteArray &path);

// Reports a failed open, reveal or get info of `file` through TestError: a
// broken link says where it points, with "Show in Folder"; a file no
// application opens gets "Open With…" too. Carries out what the user picks. A
// cancel, and a missing file manager (reported where it was found missing),
// are not reported again.
void ReportFailedChoice(FinderAction action, const FSSpec &file, OSErr err);

// Reports `err` under `headline` as soon as no menu or dialog of the program is
// up: a report that comes on its own must not open over a menu being walked.
void ReportWhenIdle(OSErr err, const QString &headline);
