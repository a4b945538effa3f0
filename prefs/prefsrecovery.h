// What keeps the user's settings safe when the preferences file or its
// folder misbehaves: a damaged or unreadable file, a save that fails at quit,
// temporary files left by a save that was cut short, a file that is a link.
#pragma once

#include "core/types.h"

#include <QByteArray>

// The file that `path` ends at once every link on the way is followed (even
// when that file does not exist yet), so that a save replaces the file a link
// points to and never the link itself.
QByteArray FinalTarget(const QByteArray &path);

// Removes the temporary files that saves of `prefsFile` interrupted before
// this copy started left in the folder they were written in. Only this
// program's own names, only regular files of this user.
void RemoveInterruptedSaves(const QByteArray &prefsFile);

// A preferences file that could not be loaded (`status`; `damaged` when it
// could be opened but its contents are wrong): asks whether to quit
// (the file untouched) or to start with the default settings, keeping the file
// beside them under a "(damaged …)" name. Returns noErr once the defaults are
// in place, otherwise the status with which start-up must stop.
OSErr OfferDefaultSettings(const QByteArray &prefsFile, OSErr status, bool damaged);

// The name a damaged file is kept under: "<name> (damaged <date>)", with a
// number added when that is taken.
QByteArray DamagedFileName(const QByteArray &prefsFile);

// Logs a save that failed and tells the user through a notification, never
// an alert: a save happens at quit, and nothing may hold a logout up.
void ReportFailedSave(const QByteArray &prefsFile, OSErr status);
