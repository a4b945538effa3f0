// Launchers, desktop entries of Type Application or Link and application
// bundles (AppDirs), run when chosen only when they are trusted: installed in
// an application or autostart folder, or allowed to run by the user. Anything
// else could be a download dressed up as a document.
#pragma once

#include "core/types.h"

#include <QByteArray>
#include <QList>

#include <functional>

// Whether the launcher at `path` may run without asking: after following links
// it lies in an application or autostart folder, or it is executable (a bundle
// always is) and carries the desktop's trust mark. Safe from any thread.
bool IsTrustedLauncher(const QByteArray &path);

// Allows the launcher to run from now on, as file managers do: the executable
// bit, then the trust mark. `done` gets the status, perhaps later.
void TrustLauncher(const QByteArray &path, std::function<void(OSErr)> done);
