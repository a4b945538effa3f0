// The front window on X11: the window manager's _NET_ACTIVE_WINDOW, watched
// on the root window, and the active window's _NET_WM_STATE for fullscreen.
#pragma once

#include "platform/frontwindow.h"

#include <QAbstractNativeEventFilter>

#include <cstdint>

namespace platform {

class X11FrontWindow final : public FrontWindow, public QAbstractNativeEventFilter {
public:
    // `userTime` gives the server time of the user's last key or button press.
    explicit X11FrontWindow(std::function<unsigned long()> userTime)
        : userTime_(std::move(userTime)) {}
    ~X11FrontWindow() override;

    ProcessSerialNumber frontProcess() override;
    bool setFrontProcess(const ProcessSerialNumber &process) override;
    ProcessSerialNumber currentProcess() override;
    bool frontIsFullscreen() override;
    void setFrontSwitchedHandler(std::function<void()> handler) override;

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

private:
    std::uint32_t activeWindow() const;
    void watchActiveWindow();
    void reportSwitch();

    std::function<unsigned long()> userTime_;
    std::function<void()> handler_;
    bool filtering_ = false;
    bool reportPending_ = false;
    std::uint32_t watched_ = 0; // the active window whose state changes are reported
};

} // namespace platform
