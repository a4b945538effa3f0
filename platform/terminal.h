// The desktop's terminal program, opened in a folder.
#pragma once

#include "core/types.h"

#include <QByteArray>

namespace platform {

class Terminal {
public:
    virtual ~Terminal() = default;
    // Starts the terminal with `folder` as its working folder and nothing to
    // run in it; kLSApplicationNotFoundErr when there is no terminal.
    virtual OSErr openIn(const QByteArray &folder) = 0;
};

} // namespace platform
