// What the title windows need from the display beyond what Qt gives: whether
// translucency works, keeping the titles above panels and docks, and the
// colours of a top panel for titles that cannot be translucent.
#pragma once

#include <QImage>
#include <QRect>

#include <functional>

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
    // What a top panel shows under `bar` (global, device-independent pixels):
    // one pixel wide and a row per device pixel of the bar's height, each row
    // the colour most of the panel's row has. Null when no panel lies there.
    virtual QImage panelBackground(const QRect &bar) = 0;
    // Calls `changed` when a compositing manager starts or stops, and when a
    // panel appears, moves or goes (once it has had time to draw itself).
    virtual void setChangedHandler(std::function<void()> changed) = 0;
};

} // namespace platform
