// The front window: which program the user is working in, and bringing one forward.
#pragma once

#include "core/types.h"

#include <functional>

namespace platform {

class FrontWindow {
public:
    virtual ~FrontWindow() = default;
    // The owner of the active window; {0, 0} when no window is active.
    virtual ProcessSerialNumber frontProcess() = 0;
    // Activates the process's window (or, without one, the first window the
    // process owns). False when it has no window to activate.
    virtual bool setFrontProcess(const ProcessSerialNumber &process) = 0;
    // This program, with its own dialog window when one is showing.
    virtual ProcessSerialNumber currentProcess() = 0;
    // Whether the active window covers the screen for itself (fullscreen).
    virtual bool frontIsFullscreen() = 0;
    // Called whenever the active window, or its fullscreen state, changes.
    virtual void setFrontSwitchedHandler(std::function<void()> handler) = 0;
};

} // namespace platform
