// Starting programs through GIO: the desktop's default applications, desktop
// entries and program files, never through a shell.
#pragma once

#include "platform/launcher.h"

namespace platform {

class GioLauncher final : public Launcher {
public:
    GioLauncher();

    OSErr openWithDefaultApplication(const QByteArray &path) override;
    OSErr openUrl(const QByteArray &url) override;
    OSErr launchDesktopEntry(const QByteArray &entry, const QList<QByteArray> &paths,
                             std::int64_t *pid) override;
    OSErr launchProgram(const QByteArray &program, const QList<QByteArray> &arguments,
                        std::int64_t *pid) override;
    FileType fileType(const QByteArray &path) override;
    QList<ApplicationInfo> applicationsFor(const QString &contentType,
                                           QList<ApplicationInfo> *others) override;
    OSErr openWith(const QByteArray &id, const QByteArray &path, bool makeDefault) override;
};

} // namespace platform
