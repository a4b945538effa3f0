// Title-window services with a settable compositor and a record of the windows kept above.
#pragma once

#include "platform/titlewindows.h"

#include <QList>

namespace platform {

class FakeTitleWindows : public TitleWindows {
public:
    bool compositingManagerRunning() override { return compositing; }
    void keepAbove(QWidget *window) override { keptAbove.append(window); }
    void forget(QWidget *window) override { keptAbove.removeAll(window); }

    bool compositing = true;
    QList<QWidget *> keptAbove;
};

} // namespace platform
