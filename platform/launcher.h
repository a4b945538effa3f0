// Starting other programs: the default application of a file or an address,
// the application of a desktop entry, or a program itself. Never through a
// shell.
#pragma once

#include "core/types.h"

#include <QByteArray>
#include <QList>

#include <cstdint>

namespace platform {

class Launcher {
public:
    virtual ~Launcher() = default;
    // Opens a file in the default application for its type. A program that
    // runs in a terminal is never picked: kLSApplicationNotFoundErr when only
    // such programs could open it.
    virtual OSErr openWithDefaultApplication(const QByteArray &path) = 0;
    // Opens an address (a web page, the target of a link entry) in its handler.
    virtual OSErr openUrl(const QByteArray &url) = 0;
    // Launches the application of a desktop entry with `paths` as its files;
    // `*pid` (when not null) is the started process, 0 when it cannot be told.
    virtual OSErr launchDesktopEntry(const QByteArray &entry, const QList<QByteArray> &paths,
                                     std::int64_t *pid) = 0;
    // Starts a program with its arguments.
    virtual OSErr launchProgram(const QByteArray &program, const QList<QByteArray> &arguments,
                                std::int64_t *pid) = 0;
};

} // namespace platform
