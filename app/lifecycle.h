// Start-up, the event loop and shut-down, and the two application-wide hooks:
// requests to quit, and file systems coming and going.
#pragma once

#include "core/types.h"
#include "platform/mounts.h"

// Signals and the end of the desktop session become requests to quit.
OSStatus InstallAppleEventHandlers();
void RemoveAppleEventHandlers();
OSErr AppleEventQuitApp();

// Mount and unmount events drop every cached folder menu.
OSStatus InstallCarbonEventHandlers();
void RemoveCarbonEventHandlers();
OSStatus VolumeCarbonEvent(platform::MountChange kind);

// The whole life of the program, from the handlers to their removal.
void RunKestrelMenu();
