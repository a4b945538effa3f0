// A terminal that records the folders it was opened in.
#pragma once

#include "platform/terminal.h"

#include <QList>

namespace platform {

class FakeTerminal : public Terminal {
public:
    OSErr openIn(const QByteArray &folder) override {
        folders.append(folder);
        return failure;
    }
    QList<QByteArray> folders;
    OSErr failure = noErr;
};

} // namespace platform
