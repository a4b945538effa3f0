// Finding other programs by their creator code: running, on disk, or launched.
#pragma once

#include "core/settings.h"
#include "core/types.h"

// 0 and `*psn` when a program of that creator runs; procNotFound otherwise.
OSErr FindApplicationProcess(OSType creator, ProcessSerialNumber *psn);
// 0 and `*app` when a program of that creator is installed.
OSErr FindApplicationFile(OSType creator, FSSpec *app);
// Launches `app`; failures are reported.
OSErr OpenApplicationFile(const FSSpec *app, ProcessSerialNumber *psn);
// Finds the running program, or launches it.
OSErr FindApplication(OSType creator, ProcessSerialNumber *psn);
