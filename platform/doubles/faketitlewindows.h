// Title-window services with a settable compositor and panel, and a record of
// the windows kept above.
#pragma once

#include "platform/titlewindows.h"

#include <QList>

namespace platform {

class FakeTitleWindows : public TitleWindows {
public:
    bool compositingManagerRunning() override { return compositing; }
    void keepAbove(QWidget *window) override { keptAbove.append(window); }
    void forget(QWidget *window) override { keptAbove.removeAll(window); }
    QImage panelBackground(const QRect &) override { return panel; }
    void setChangedHandler(std::function<void()> handler) override { changed = std::move(handler); }

    bool compositing = true;
    QImage panel;
    QList<QWidget *> keptAbove;
    std::function<void()> changed;
};

} // namespace platform
