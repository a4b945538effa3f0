#include "core/eventloop.h"

#include <QCoreApplication>

namespace {
// A quit asked for before the loop runs (during a start-up alert, say) still counts.
bool quitRequested = false;
} // namespace

void RunApplicationEventLoop() {
    if (!quitRequested)
        QCoreApplication::exec();
}

void QuitApplicationEventLoop() {
    quitRequested = true;
    QCoreApplication::exit(0);
}
