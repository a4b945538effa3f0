// Title windows on X11: override-redirect windows sit wherever they were put,
// but a panel or dock mapped or raised later would cover them. This watches
// the root window's stacking and puts the titles back on top of every window
// the window manager handles, leaving pop-up menus and tooltips above them.
#pragma once

#include "platform/titlewindows.h"

#include <QAbstractNativeEventFilter>
#include <QList>
#include <QPointer>
#include <QWidget>

#include <cstdint>

namespace platform {

class X11TitleWindows final : public TitleWindows, public QAbstractNativeEventFilter {
public:
    X11TitleWindows() = default;
    ~X11TitleWindows() override;

    bool compositingManagerRunning() override;
    void keepAbove(QWidget *window) override;
    void forget(QWidget *window) override;

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

    // Puts the titles back above the topmost managed window, if they are not already.
    void restack();

private:
    bool isTitle(std::uint32_t window) const;
    void scheduleRestack();

    QList<QPointer<QWidget>> windows_;
    QList<std::uint32_t> ids_;
    bool filtering_ = false;
    bool restackPending_ = false;
};

} // namespace platform
