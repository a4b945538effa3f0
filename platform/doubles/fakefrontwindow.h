// A front window that is just a value, with the calls made to it recorded.
#pragma once

#include "platform/frontwindow.h"

#include <QList>

namespace platform {

class FakeFrontWindow : public FrontWindow {
public:
    ProcessSerialNumber frontProcess() override { return front; }
    bool setFrontProcess(const ProcessSerialNumber &process) override {
        broughtToFront.append(process);
        if (!canActivate)
            return false;
        front = process;
        return true;
    }
    ProcessSerialNumber currentProcess() override { return self; }
    bool frontIsFullscreen() override { return fullscreen; }
    void setFrontSwitchedHandler(std::function<void()> handler) override {
        switched = std::move(handler);
    }

    // Makes `process` the front one, as if the user had switched to it.
    void switchTo(const ProcessSerialNumber &process, bool isFullscreen = false) {
        front = process;
        fullscreen = isFullscreen;
        if (switched)
            switched();
    }

    ProcessSerialNumber front;
    ProcessSerialNumber self{1000, 1};
    bool fullscreen = false;
    bool canActivate = true;
    QList<ProcessSerialNumber> broughtToFront;
    std::function<void()> switched;
};

} // namespace platform
