#include "finder/applications.h"

#include "core/desktopentry.h"
#include "core/errors.h"
#include "core/folders.h"
#include "finder/finderevents.h"
#include "platform/launcher.h"
#include "platform/processes.h"
#include "platform/service.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <unistd.h>

namespace {

// A program named by an Exec line: a path as it stands, a bare name on PATH.
bool ProgramExists(const QByteArray &program) {
    if (program.contains('/'))
        return ::access(program.constData(), X_OK) == 0;
    for (const QByteArray &dir : qgetenv("PATH").split(':')) {
        if (!dir.isEmpty() && ::access(JoinPath(dir, program).constData(), X_OK) == 0)
            return true;
    }
    return false;
}

// Whether the entry at `path` starts one of `programs`, and that program is
// really installed (an entry may outlive its program).
bool EntryStartsProgram(const QByteArray &path, std::span<const char *const> programs) {
    const auto entry = DesktopEntry::read(path);
    if (!entry || entry->isDisabled())
        return false;
    if (entry->value(QStringLiteral("Type")).value_or(QString()) != QLatin1String("Application"))
        return false;
    const auto program = entry->execProgram();
    if (!program)
        return false;
    const QByteArray name = LastPathComponent(*program);
    const bool matches = std::any_of(programs.begin(), programs.end(),
                                     [&](const char *wanted) { return name == wanted; });
    return matches && ProgramExists(*program);
}

} // namespace

OSErr FindApplicationProcess(OSType creator, ProcessSerialNumber *psn) {
    return FindProcess(kApplicationType, creator, psn) ? noErr : procNotFound;
}

OSErr FindApplicationFile(OSType creator, FSSpec *app) {
    const auto programs = platform::ProgramsOfCreator(creator);
    if (programs.empty())
        return nsvErr;
    // An entry in an earlier folder hides one of the same name in a later one.
    QList<QByteArray> seen;
    for (const QByteArray &folder : ApplicationFolders()) {
        QList<QByteArray> names;
        const QDir dir(QFile::decodeName(folder));
        for (const QString &name : dir.entryList({QStringLiteral("*.desktop")}, QDir::Files))
            names.append(QFile::encodeName(name));
        std::sort(names.begin(), names.end());
        for (const QByteArray &name : names) {
            if (seen.contains(name))
                continue;
            seen.append(name);
            const QByteArray path = JoinPath(folder, name);
            if (EntryStartsProgram(path, programs)) {
                app->path = path;
                return noErr;
            }
        }
    }
    // Every place has been searched, as past the last volume.
    return nsvErr;
}

OSErr OpenApplicationFile(const FSSpec *app, ProcessSerialNumber *psn) {
    platform::Launcher &launcher = platform::service<platform::Launcher>();
    std::int64_t pid = 0;
    const OSErr err = app->path.endsWith(".desktop")
                          ? launcher.launchDesktopEntry(app->path, {}, &pid)
                          : launcher.launchProgram(app->path, {}, &pid);
    TestError(err);
    if (err == noErr)
        *psn = ProcessSerialNumber{pid, 0};
    return err;
}

OSErr FindApplication(OSType creator, ProcessSerialNumber *psn) {
    if (FindApplicationProcess(creator, psn) == noErr)
        return noErr;
    FSSpec app;
    if (const OSErr err = FindApplicationFile(creator, &app); err != noErr)
        return err;
    return OpenApplicationFile(&app, psn);
}
