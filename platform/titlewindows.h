// What the title windows need from the display beyond what Qt gives: whether
// translucency works, and keeping the titles above panels and docks.
#pragma once

class QWidget;

namespace platform {

class TitleWindows {
public:
    virtual ~TitleWindows() = default;
    // Whether a compositing manager runs, so that translucent windows blend.
    virtual bool compositingManagerRunning() = 0;
    // Keeps `window` above every ordinary and dock window from now on, raising
    // it again whenever the stacking changes. The window must stay alive until
    // `forget`.
    virtual void keepAbove(QWidget *window) = 0;
    virtual void forget(QWidget *window) = 0;
};

} // namespace platform
