#include "finder/finderevents.h"

#include "core/desktopentry.h"
#include "core/errors.h"
#include "core/folders.h"
#include "finder/alias.h"
#include "finder/choicefailure.h"
#include "finder/launchertrust.h"
#include "platform/alerts.h"
#include "platform/filemanager.h"
#include "platform/frontwindow.h"
#include "platform/launcher.h"
#include "platform/processes.h"
#include "platform/service.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcFinder, "kestrel.finder", QtWarningMsg)

namespace {

// An application bundle: a folder that holds an executable "AppRun" (which
// no file but a folder can).
bool IsApplicationBundle(const QByteArray &path) {
    const QByteArray run = JoinPath(path, "AppRun");
    struct stat info;
    return ::stat(run.constData(), &info) == 0 && S_ISREG(info.st_mode) &&
           ::access(run.constData(), X_OK) == 0;
}

QString Tr(const char *text) {
    return QCoreApplication::translate("Finder", text);
}

enum LaunchAnswer { kCancel, kLaunchOnce, kTrustAndLaunch };

// Asks before an untrusted launcher runs, showing what it really is: its file
// and the command it would run.
LaunchAnswer AskToLaunch(const QByteArray &launcher, const QString &command) {
    QByteArray real = RealPath(launcher);
    if (real.isEmpty())
        real = launcher;
    qCInfo(lcFinder, "asking before launching %s", real.constData());
    platform::Alert alert;
    alert.headline = Tr("“%1” is not a trusted launcher.").arg(ItemName(launcher));
    alert.explanation =
        Tr("It was not installed as an application and has not been allowed to run. Launch it "
           "only if you know where it came from.\n\nIt would run:\n%1\n\nIts file:\n%2")
            .arg(command, QFile::decodeName(real));
    alert.buttons = {Tr("Cancel"), Tr("&Launch Once"), Tr("&Trust and Launch")};
    return LaunchAnswer(platform::service<platform::Alerts>().showAlert(alert));
}

} // namespace

OSErr LaunchIfTrusted(const QByteArray &launcher, const QString &command,
                      const std::function<OSErr()> &launch) {
    if (!IsTrustedLauncher(launcher)) {
        switch (AskToLaunch(launcher, command)) {
        case kLaunchOnce:
            break;
        case kTrustAndLaunch:
            TrustLauncher(launcher, [name = LastPathComponent(launcher)](OSErr err) {
                if (err != noErr)
                    ReportWhenIdle(
                        err,
                        Tr("“%1” could not be marked as trusted.").arg(QFile::decodeName(name)));
            });
            break;
        default:
            return userCanceledErr;
        }
    }
    return launch();
}

namespace {

// Opens one item that is not a plain folder: an application bundle or the
// application of a desktop entry is started, once trusted; anything else goes
// to the application for its type, so that a program or a script that is not
// a launcher is never run.
OSErr OpenItem(const QByteArray &path) {
    platform::Launcher &launcher = platform::service<platform::Launcher>();
    if (IsApplicationBundle(path)) {
        const QByteArray run = JoinPath(path, "AppRun");
        return LaunchIfTrusted(path, QFile::decodeName(run),
                               [&] { return launcher.launchProgram(run, {}, nullptr); });
    }
    if (path.endsWith(".desktop")) {
        if (const auto entry = DesktopEntry::read(path)) {
            const QString type = entry->value(QStringLiteral("Type")).value_or(QString());
            if (type == QLatin1String("Application")) {
                const QString exec = entry->value(QStringLiteral("Exec")).value_or(QString());
                return LaunchIfTrusted(
                    path, exec, [&] { return launcher.launchDesktopEntry(path, {}, nullptr); });
            }
            if (type == QLatin1String("Link")) {
                const QString url = entry->value(QStringLiteral("URL")).value_or(QString());
                if (url.isEmpty())
                    return paramErr;
                return LaunchIfTrusted(path, Tr("open %1").arg(url),
                                       [&] { return launcher.openUrl(url.toUtf8()); });
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
        // A broken link has nothing to open.
        struct stat info;
        if (::stat(item.constData(), &info) != 0)
            return OSErrFromErrno(errno);
        // A folder opens as a folder, not as the application it holds.
        if (S_ISDIR(info.st_mode) && !IsApplicationBundle(item)) {
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

void FileManagerRequestFailed(const platform::FailedRequest &request) {
    // A request that never reached the file manager goes to the folder
    // application instead, as when there is no file manager at all.
    OSErr err = request.status;
    if (err == connectionInvalid &&
        platform::service<platform::FileManager>().alternativeExists()) {
        if (request.method == "ShowFolders")
            err = OpenItems(request.paths, true);
        else if (request.method == "ShowItems")
            err = RevealItems(request.paths, true);
        if (err == noErr)
            return;
    }
    const QString fileManager = platform::service<platform::FileManager>().serviceName();
    const QString who = fileManager.isEmpty() ? Tr("The file manager") : fileManager;
    const QString item = ItemName(request.paths.value(0));
    const QString text = err == errAETimeout ? Tr("%1 did not answer in time to show “%2”.")
                         : err == errAEEventFailed ? Tr("%1 could not show “%2”.")
                                                   : Tr("%1 could not be reached to show “%2”.");
    ReportWhenIdle(err, text.arg(who, item));
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

    // The alternative takes reveal and get info one item at a time.
    if (isAlternateFinder && items->isList &&
        (action == kFinderReveal || action == kFinderGetInfo)) {
        for (const QByteArray &item : items->items) {
            const AEDesc single{false, {item}};
            if (const OSErr err = DoFinderFilesToDesc(action, &single, extra); err != noErr)
                return err;
        }
        return noErr;
    }
    // The requests carry the user's activation token: the file manager brings
    // its window forward itself, and nothing forces it.
    platform::service<platform::FileManager>().setFailureHandler(FileManagerRequestFailed);

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
    ResolveAliasFile(&target, true, nullptr, nullptr);

    AEDescList list{true, {}};
    if (const OSErr err = AddFileToAEList(&target, &list); err != noErr)
        return err;
    return DoFinderFiles(action, &list, extra);
}
