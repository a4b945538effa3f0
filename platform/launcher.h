// Starting other programs: the default application of a file or an address,
// the application of a desktop entry, or a program itself. Never through a
// shell.
#pragma once

#include "core/types.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstdint>

namespace platform {

// An installed application, as the chooser of applications lists it.
struct ApplicationInfo {
    QByteArray id; // the desktop file id
    QString name;
    QString iconName;
    // It names the type it was listed for itself, not only a type that type
    // belongs to (a launcher's type, not plain text): it may run such files.
    bool namesType = false;
    friend bool operator==(const ApplicationInfo &, const ApplicationInfo &) = default;
};

struct FileType {
    QString contentType; // "text/plain"; empty when it cannot be told
    QString description; // "plain text document"
};

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

    // The type of a file, told by its name and contents.
    virtual FileType fileType(const QByteArray &path) = 0;
    // The applications that say they open `contentType`, the default first;
    // `*others` (when not null) gets every other application, by name.
    virtual QList<ApplicationInfo> applicationsFor(const QString &contentType,
                                                   QList<ApplicationInfo> *others) = 0;
    // Opens `path` in the application `id`; with `makeDefault`, that application
    // becomes the default for the file's type first.
    virtual OSErr openWith(const QByteArray &id, const QByteArray &path, bool makeDefault) = 0;
};

} // namespace platform
