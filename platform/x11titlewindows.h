// Title windows on X11: override-redirect windows sit wherever they were put,
// but a panel or dock mapped or raised later would cover them. This watches
// the root window's stacking and puts the titles back on top of every window
// the window manager handles, leaving pop-up menus and tooltips above them. It
// also watches the compositing manager's selection, and reads a top panel's
// colours off the screen for titles drawn without translucency.
#pragma once

#include "platform/titlewindows.h"

#include <QAbstractNativeEventFilter>
#include <QList>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <cstdint>

namespace platform {

class X11TitleWindows final : public TitleWindows, public QAbstractNativeEventFilter {
public:
    X11TitleWindows();
    ~X11TitleWindows() override;

    bool compositingManagerRunning() override;
    void keepAbove(QWidget *window) override;
    void forget(QWidget *window) override;
    QImage panelBackground(const QRect &bar) override;
    void setChangedHandler(std::function<void()> changed) override;

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

    // Puts the titles back above the topmost managed window, if they are not already.
    void restack();

private:
    bool isTitle(std::uint32_t window) const;
    void filterEvents();
    void scheduleRestack();
    void windowsChanged();

    QList<QPointer<QWidget>> windows_;
    QList<std::uint32_t> ids_;
    bool filtering_ = false;
    bool restackPending_ = false;
    std::function<void()> changed_;
    // A panel that has just appeared or moved is given time to draw itself.
    QTimer panelSettled_;
};

} // namespace platform
