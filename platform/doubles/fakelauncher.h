// A launcher that records what it was asked to start and starts nothing.
#pragma once

#include "platform/launcher.h"

#include <QList>

namespace platform {

class FakeLauncher : public Launcher {
public:
    struct Launch {
        QByteArray what; // "Default", "Url", "Entry", "Program", "With", "WithAsDefault"
        QByteArray target;
        QList<QByteArray> arguments;
        friend bool operator==(const Launch &, const Launch &) = default;
    };

    OSErr openWithDefaultApplication(const QByteArray &path) override {
        return record({"Default", path, {}}, nullptr);
    }
    OSErr openUrl(const QByteArray &url) override { return record({"Url", url, {}}, nullptr); }
    OSErr launchDesktopEntry(const QByteArray &entry, const QList<QByteArray> &paths,
                             std::int64_t *pid) override {
        return record({"Entry", entry, paths}, pid);
    }
    OSErr launchProgram(const QByteArray &program, const QList<QByteArray> &arguments,
                        std::int64_t *pid) override {
        return record({"Program", program, arguments}, pid);
    }

    FileType fileType(const QByteArray &) override { return type; }
    QList<ApplicationInfo> applicationsFor(const QString &,
                                           QList<ApplicationInfo> *others) override {
        if (others != nullptr)
            *others = otherApplications;
        return declaredApplications;
    }
    OSErr openWith(const QByteArray &id, const QByteArray &path, bool makeDefault) override {
        return record({makeDefault ? "WithAsDefault" : "With", path, {id}}, nullptr);
    }

    FileType type{QStringLiteral("application/x-kestrel"), QStringLiteral("Kestrel document")};
    QList<ApplicationInfo> declaredApplications, otherApplications;
    OSErr failure = noErr;
    std::int64_t nextPid = 4242;
    QList<Launch> launches;

private:
    OSErr record(Launch launch, std::int64_t *pid) {
        launches.append(std::move(launch));
        if (pid != nullptr)
            *pid = failure == noErr ? nextPid : 0;
        return failure;
    }
};

} // namespace platform
