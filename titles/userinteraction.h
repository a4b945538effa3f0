// The program's own dialogs: while one is in progress a click on a title only
// brings the program forward, and the window that was in front comes back after.
#pragma once

#include "core/types.h"

#include <cstdint>

extern std::int32_t userInteractionHideLevel; // dialogs in progress

// Counts one more dialog, re-applies title visibility, records the front
// process in `previousFront` and brings this program to the front.
void BeginUserInteraction(ProcessSerialNumber *previousFront);
// Brings `previousFront` back (unless null), counts the dialog done and
// re-applies title visibility.
void EndUserInteraction(const ProcessSerialNumber *previousFront);
