#include "finder/finderevents.h"

#include "core/desktopentry.h"
#include "core/errors.h"
#include "core/folders.h"
#include "finder/alias.h"
#include "platform/filemanager.h"
#include "platform/frontwindow.h"
#include "platform/launcher.h"
#include "platform/processes.h"
#include "platform/service.h"

#include <QLoggingCategory>

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcFinder, "kestrel.finder")

namespace {

bool IsFolder(const QByteArray &path) {
    struct stat info;
    return ::stat(path.constData(), &info) == 0 && S_ISDIR(info.st_mode);
}

// An application bundle: a folder that holds an executable "AppRun".
bool IsApplicationBundle(const QByteArray &path) {
    const QByteArray run = JoinPath(path, "AppRun");
    struct stat info;
    return IsFolder(path) && ::stat(run.constData(), &info) == 0 && S_ISREG(info.st_mode) &&
           ::access(run.constData(), X_OK) == 0;
}

// A folder that opens as a folder, not as the application it holds.
bool IsPlainFolder(const QByteArray &path) {
    return IsFolder(path) && !IsApplicationBundle(path);
}

// Opens one item that is not a plain folder: an application bundle or the
// application of a desktop entry is started; anything else goes to the default
// application for its type.
OSErr OpenItem(const QByteArray &path) {
    platform::Launcher &launcher = platform::service<platform::Launcher>();
    if (IsApplicationBundle(path))
        return launcher.launchProgram(JoinPath(path, "AppRun"), {}, nullptr);
    if (path.endsWith(".desktop")) {
        if (const auto entry = DesktopEntry::read(path)) {
            const QString type = entry->value(QStringLiteral("Type")).value_or(QString());
            if (type == QLatin1String("Application"))
                return launcher.launchDesktopEntry(path, {}, nullptr);
            if (type == QLatin1String("Link")) {
                const auto url = entry->value(QStringLiteral("URL"));
                if (!url || url->isEmpty())
                    return paramErr;
                return launcher.openUrl(url->toUtf8());
            }
        }
    }
    return launcher.openWithDefaultApplication(path);
}

// Plain folders go to the file manager together, in one request, after the
// other items have been opened one by one.
OSErr OpenItems(const QList<QByteArray> &items, bool isAlternateFinder) {
    QList<QByteArray> folders;
    for (const QByteArray &item : items) {
        struct stat info;
        if (::lstat(item.constData(), &info) != 0)
            return OSErrFromErrno(errno);
        if (IsPlainFolder(item)) {
            folders.append(item);
            continue;
        }
        if (const OSErr err = OpenItem(item); err != noErr)
            return err;
    }
    if (folders.isEmpty())
        return noErr;
    platform::FileManager &fileManager = platform::service<platform::FileManager>();
    return isAlternateFinder ? fileManager.alternativeOpenFolders(folders)
                             : fileManager.showFolders(folders);
}

OSErr RevealItems(const QList<QByteArray> &items, bool isAlternateFinder) {
    platform::FileManager &fileManager = platform::service<platform::FileManager>();
    if (!isAlternateFinder)
        return fileManager.showItems(items);
    // The folder application cannot point at an item: it opens the folder that
    // holds it.
    for (const QByteArray &item : items) {
        if (const OSErr err = fileManager.alternativeOpenFolders({ParentPath(item)}); err != noErr)
            return err;
    }
    return noErr;
}

OSErr CopyOrMoveItems(FinderAction action, const QList<QByteArray> &items, const AEDesc *extra) {
    if (extra == nullptr || extra->items.isEmpty())
        return paramErr;
    const QByteArray &folder = extra->items.first();
    platform::FileManager &fileManager = platform::service<platform::FileManager>();
    for (const QByteArray &item : items) {
        const OSErr err = action == kFinderDuplicate ? fileManager.copyInto(item, folder)
                                                     : fileManager.moveInto(item, folder);
        if (err != noErr)
            return err;
    }
    return noErr;
}

} // namespace

bool FindProcess(OSType type, OSType creator, ProcessSerialNumber *psn) {
    *psn = ProcessSerialNumber{};
    if (type == kFinderType && creator == kFinderCreator) {
        platform::FileManager &fileManager = platform::service<platform::FileManager>();
        if (!fileManager.serviceExists())
            return false;
        psn->pid = fileManager.serviceProcess();
        return true;
    }
    if (type == kApplicationType && creator == kAlternateFinderCreator) {
        platform::FileManager &fileManager = platform::service<platform::FileManager>();
        if (!fileManager.alternativeExists())
            return false;
        psn->pid = fileManager.alternativeProcess();
        return true;
    }
    for (const platform::RunningProcess &process :
         platform::service<platform::Processes>().running()) {
        const OSType processType = process.isApplication ? kApplicationType : FourCC("????");
        if (processType == type && platform::IsProgramOfCreator(process, creator)) {
            psn->pid = process.pid;
            return true;
        }
    }
    return false;
}

OSErr GetFinderProcess(ProcessSerialNumber *psn, bool *isAlternateFinder) {
    OSErr err = noErr;
    bool alternate = false;
    if (!FindProcess(kFinderType, kFinderCreator, psn)) {
        if (FindProcess(kApplicationType, kAlternateFinderCreator, psn))
            alternate = true;
        else
            err = procNotFound;
    }
    if (isAlternateFinder != nullptr)
        *isAlternateFinder = alternate;
    TestError(err);
    return err;
}

OSErr BringFinderToFront() {
    ProcessSerialNumber psn;
    const OSErr err = GetFinderProcess(&psn, nullptr);
    // A file manager that the bus has yet to start has no window to raise.
    if (err == noErr && psn.pid != 0)
        platform::service<platform::FrontWindow>().setFrontProcess(psn);
    return err;
}

OSErr CreateFileDesc(const FSSpec *file, AEDesc *desc) {
    if (!file->path.startsWith('/'))
        return paramErr;
    *desc = AEDesc{false, {file->path}};
    return noErr;
}

OSErr AddFileToAEList(const FSSpec *file, AEDescList *list) {
    AEDesc desc;
    if (const OSErr err = CreateFileDesc(file, &desc); err != noErr)
        return err;
    list->items.append(desc.items);
    return noErr;
}

OSErr DoFinderFilesToDesc(FinderAction action, const AEDesc *items, const AEDesc *extra) {
    ProcessSerialNumber psn;
    bool isAlternateFinder = false;
    if (const OSErr err = GetFinderProcess(&psn, &isAlternateFinder); err != noErr)
        return err;

    // The alternative takes reveal and get info one item at a time, coming to
    // the front for each.
    if (isAlternateFinder && items->isList &&
        (action == kFinderReveal || action == kFinderGetInfo)) {
        for (const QByteArray &item : items->items) {
            const AEDesc single{false, {item}};
            if (const OSErr err = DoFinderFilesToDesc(action, &single, extra); err != noErr)
                return err;
        }
        return noErr;
    }
    if (action == kFinderReveal || action == kFinderGetInfo)
        BringFinderToFront();

    switch (action) {
    case kFinderOpen:
        return OpenItems(items->items, isAlternateFinder);
    case kFinderOpenWith:
        if (extra == nullptr || extra->items.isEmpty())
            return paramErr;
        return platform::service<platform::Launcher>().launchDesktopEntry(extra->items.first(),
                                                                          items->items, nullptr);
    case kFinderReveal:
        return RevealItems(items->items, isAlternateFinder);
    case kFinderDuplicate:
    case kFinderMove:
        return CopyOrMoveItems(action, items->items, extra);
    case kFinderGetInfo: {
        // The folder application has no information window.
        if (isAlternateFinder)
            return errAEEventNotHandled;
        // One information window, for the first item only.
        if (items->items.isEmpty())
            return paramErr;
        const QByteArray &first = items->items.first();
        struct stat info;
        if (::lstat(first.constData(), &info) != 0)
            return OSErrFromErrno(errno);
        return platform::service<platform::FileManager>().showItemProperties({first});
    }
    }
    return paramErr;
}

OSErr DoFinderFiles(FinderAction action, const AEDescList *items, const FSSpec *extra) {
    if (action == kFinderOpenWith || action == kFinderDuplicate || action == kFinderMove) {
        if (extra == nullptr)
            return paramErr;
        AEDesc extraDesc;
        if (const OSErr err = CreateFileDesc(extra, &extraDesc); err != noErr)
            return err;
        return DoFinderFilesToDesc(action, items, &extraDesc);
    }
    return DoFinderFilesToDesc(action, items, nullptr);
}

OSErr DoFinderFile(FinderAction action, const FSSpec *file, const FSSpec *extra) {
    // A broken link is sent as it is: the file manager says what it can of it.
    FSSpec target = *file;
    bool targetIsFolder = false;
    ResolveAliasFile(&target, true, &targetIsFolder, nullptr);

    AEDescList list{true, {}};
    if (const OSErr err = AddFileToAEList(&target, &list); err != noErr)
        return err;
    if (const OSErr err = DoFinderFiles(action, &list, extra); err != noErr)
        return err;

    // The new folder window comes to the front; documents and applications
    // open in front of their own accord.
    if (action == kFinderOpen && targetIsFolder && IsPlainFolder(target.path))
        BringFinderToFront();
    return noErr;
}
