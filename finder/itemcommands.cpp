#include "finder/itemcommands.h"

#include "core/desktopentry.h"
#include "core/errors.h"
#include "core/folders.h"
#include "core/settings.h"
#include "finder/choicefailure.h"
#include "finder/finderevents.h"
#include "finder/openwithchooser.h"
#include "platform/filemanager.h"
#include "platform/launcher.h"
#include "platform/service.h"
#include "platform/terminal.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QFile>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QMimeData>

#include <climits>
#include <cstdlib>

Q_DECLARE_LOGGING_CATEGORY(lcFinder)

namespace {

QString Tr(const char *text) {
    return QCoreApplication::translate("Finder", text);
}

// Reports `err` under `headline`, followed by what the status says.
void Report(OSErr err, const QString &headline) {
    if (err == noErr || err == userCanceledErr)
        return;
    ErrorOffer offer(headline + u' ' + MakeErrorAlertTexts(err).message);
    TestError(err);
}

QList<QByteArray> TitleFolders() {
    QList<QByteArray> folders;
    for (const MenuSpec *spec = firstMenuSpec; spec != nullptr; spec = spec->next) {
        if (spec->contents == kContentsFolder && !spec->folder.path.isEmpty())
            folders.append(spec->folder.path);
    }
    return folders;
}

// Whether `folder` is `inner` or holds it.
bool Holds(const QByteArray &folder, const QByteArray &inner) {
    return inner == folder || inner.startsWith(folder.endsWith('/') ? folder : folder + '/');
}

// A folder the trash must never take: the home folder, a title's folder, or
// one that holds either. Compared by name as given and, when `followLinks`,
// as the file system resolves both.
bool IsKeptFolder(const QByteArray &path, bool followLinks) {
    const auto real = [followLinks](const QByteArray &name) {
        const QByteArray resolved = followLinks ? RealPath(name) : QByteArray();
        return resolved.isEmpty() ? name : resolved;
    };
    QList<QByteArray> kept = TitleFolders();
    if (QByteArray home; FindHomeFolder(&home) == noErr)
        kept.append(home);
    const QByteArray item = real(path);
    for (const QByteArray &folder : kept) {
        if (Holds(path, folder) || Holds(item, real(folder)))
            return true;
    }
    return false;
}

bool IsInTitleFolder(const QByteArray &entry) {
    const QByteArray parent = ParentPath(entry);
    for (const QByteArray &folder : TitleFolders()) {
        if (parent == folder || parent + '/' == folder)
            return true;
    }
    return false;
}

// A desktop entry that starts an application or opens an address.
bool IsLauncherEntry(const QByteArray &path) {
    if (!path.endsWith(".desktop"))
        return false;
    const auto entry = DesktopEntry::read(path);
    return entry && entry->isLauncher();
}

// Copied as text and as a file's address, in the forms file managers paste.
void CopyPath(const QByteArray &path) {
    const QByteArray uri = FileUriFromPath(path);
    auto *data = new QMimeData;
    data->setText(QFile::decodeName(path));
    data->setData(QStringLiteral("text/uri-list"), uri + "\r\n");
    data->setData(QStringLiteral("x-special/gnome-copied-files"), "copy\n" + uri);
    QGuiApplication::clipboard()->setMimeData(data);
}

void OpenInTerminal(const QByteArray &folder) {
    const OSErr err = platform::service<platform::Terminal>().openIn(folder);
    if (err == kLSApplicationNotFoundErr) {
        ErrorOffer offer(Tr("No terminal program was found to open “%1” in. Install one, or "
                            "choose one in your desktop's settings.")
                             .arg(ItemName(folder)));
        TestError(err);
        return;
    }
    Report(err, Tr("A terminal could not be opened in “%1”.").arg(ItemName(folder)));
}

void MoveToTrash(const QByteArray &item, const QString &failure) {
    const OSErr err = platform::service<platform::FileManager>().moveToTrash(item);
    qCInfo(lcFinder, "moved to the trash: %s (status %d)", item.constData(), int(err));
    Report(err, failure.arg(ItemName(item)));
}

} // namespace

bool IsItemCommandOffered(ItemCommand command, const MenuItemFiles &item) {
    switch (command) {
    case ItemCommand::OpenInTerminal:
        return item.isFolder;
    case ItemCommand::MoveToTrash:
        return !IsKeptFolder(item.path, false);
    case ItemCommand::RemoveFromMenu:
        return IsInTitleFolder(item.entry);
    default:
        return true;
    }
}

void DoItemCommand(ItemCommand command, const MenuItemFiles &item, const QByteArray &application) {
    switch (command) {
    case ItemCommand::OpenWith:
        Report(OpenWithApplication(item.path, application, false),
               Tr("“%1” could not be opened.").arg(ItemName(item.path)));
        break;
    case ItemCommand::OpenWithOther:
        OpenWithChosenApplication(item.path);
        break;
    case ItemCommand::OpenInTerminal:
        OpenInTerminal(item.path);
        break;
    case ItemCommand::CopyPath:
        CopyPath(item.path);
        break;
    case ItemCommand::MoveToTrash:
        // Looked at again now, with every link followed: the names alone
        // could miss a title's folder reached another way.
        if (IsKeptFolder(item.path, true)) {
            ErrorOffer offer(Tr("“%1” holds the folder of a title, or your home folder, and "
                                "stays where it is.")
                                 .arg(ItemName(item.path)));
            TestError(fBsyErr);
            break;
        }
        MoveToTrash(item.path, Tr("“%1” could not be moved to the trash."));
        break;
    case ItemCommand::RemoveFromMenu:
        MoveToTrash(item.entry, Tr("“%1” could not be removed from the menu."));
        break;
    case ItemCommand::Open:
    case ItemCommand::ShowInFolder:
    case ItemCommand::Properties:
        break;
    }
}

OSErr OpenWithApplication(const QByteArray &path, const QByteArray &id, bool makeDefault) {
    platform::Launcher &launcher = platform::service<platform::Launcher>();
    const auto open = [&] { return launcher.openWith(id, path, makeDefault); };
    if (!IsLauncherEntry(path))
        return open();
    const QList<platform::ApplicationInfo> declared =
        launcher.applicationsFor(launcher.fileType(path).contentType, nullptr);
    for (const platform::ApplicationInfo &application : declared) {
        if (application.id == id && application.namesType)
            return LaunchIfTrusted(path, Tr("%1 with this file").arg(application.name), open);
    }
    return open();
}

void OpenWithChosenApplication(const QByteArray &path) {
    platform::Launcher &launcher = platform::service<platform::Launcher>();
    const platform::FileType type = launcher.fileType(path);
    QList<platform::ApplicationInfo> others;
    const QList<platform::ApplicationInfo> declared =
        launcher.applicationsFor(type.contentType, &others);
    const ApplicationChoice choice = ChooseApplication(ItemName(path), type, declared, others);
    if (!choice.id.isEmpty())
        TestError(OpenWithApplication(path, choice.id, choice.makeDefault));
}
