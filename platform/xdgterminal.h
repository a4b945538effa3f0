// The terminal a desktop user expects: xdg-terminal-exec where it is
// installed, else the terminal the desktop's settings name (GNOME, Cinnamon
// and MATE through GSettings, KDE Plasma's kdeglobals, Xfce's preferred
// applications), else the system's x-terminal-emulator. Started in the folder
// itself, never through a shell.
#pragma once

#include "platform/terminal.h"

#include <QList>

namespace platform {

class XdgTerminal final : public Terminal {
public:
    OSErr openIn(const QByteArray &folder) override;

    // The command that starts the terminal, program first and found on the
    // search path; empty when there is none.
    static QList<QByteArray> command();
};

} // namespace platform
