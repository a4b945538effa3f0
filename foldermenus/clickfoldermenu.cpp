#include "foldermenus/clickfoldermenu.h"

#include "core/errors.h"
#include "core/eventloop.h"
#include "core/folders.h"
#include "dialogs/aboutbox.h"
#include "dialogs/preferencesdialog.h"
#include "finder/alias.h"
#include "finder/choicefailure.h"
#include "finder/choosers.h"
#include "finder/finderevents.h"
#include "foldermenus/buildsubmenu.h"
#include "foldermenus/foldercache.h"
#include "foldermenus/foldermenu.h"
#include "foldermenus/menutracking.h"
#include "platform/pointer.h"
#include "platform/service.h"
#include "resources/menus.h"
#include "titles/readymenu.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>
#include <QMenu>
#include <QTimer>

#include <optional>

Q_DECLARE_LOGGING_CATEGORY(lcMenuChoice)

namespace {

// Ctrl wins over Shift; Alt, Super and Caps Lock change nothing.
FinderAction FolderItemAction(std::uint16_t modifiers) {
    if ((modifiers & cmdKey) != 0)
        return kFinderReveal;
    if ((modifiers & shiftKey) != 0)
        return kFinderGetInfo;
    return kFinderOpen;
}

// The context menu's entries that the file manager carries out, as choices do.
std::optional<FinderAction> FinderActionOf(const std::optional<ItemCommandChoice> &choice) {
    if (!choice)
        return std::nullopt;
    switch (choice->command) {
    case ItemCommand::Open:
        return kFinderOpen;
    case ItemCommand::ShowInFolder:
        return kFinderReveal;
    case ItemCommand::Properties:
        return kFinderGetInfo;
    default:
        return std::nullopt;
    }
}

// Menus of a click left up by a failed request are taken down by the next
// click; the last ones go when the program ends.
void TearDownDepthMenusAtExit() {
    static const bool registered = [] {
        qAddPostRoutine(TearDownDepthMenus);
        return true;
    }();
    Q_UNUSED(registered);
}

void OpenMenuFolder(ReadyMenu *readyMenu) {
    // Both report on their own; a missing file manager is reported twice.
    BringFinderToFront();
    DoFinderFile(kFinderOpen, &readyMenu->menuSpec->folder, nullptr);
}

void AddItemToMenuFolder(ReadyMenu *readyMenu) {
    ProcessSerialNumber psn;
    bool isAlternateFinder = false;
    if (GetFinderProcess(&psn, &isAlternateFinder) != noErr)
        return;
    // The folder application knows no chooser of ours: the folder opens
    // instead, and the user puts the item there.
    if (isAlternateFinder) {
        OpenMenuFolder(readyMenu);
        return;
    }
    FSSpec object;
    if (!SelectAnObject(&object))
        return;
    const FSSpec &folder = readyMenu->menuSpec->folder;
    if (const OSErr err = CreateAlias(&object, &folder); err != noErr)
        qCWarning(lcMenuChoice, "could not link %s into %s (error %d)",
                  qPrintable(QFile::decodeName(object.path)),
                  qPrintable(QFile::decodeName(folder.path)), int(err));
    DestroyFolderCachedMenu(readyMenu);
}

int CountTitles() {
    int count = 0;
    for (const ReadyMenu *title = firstReadyMenu; title != nullptr; title = title->next)
        ++count;
    return count;
}

// A folder chosen becomes a title of its own, after the others; it is saved
// with the other menus.
void NewTitleForFolder() {
    FSSpec folder;
    FindHomeFolder(&folder.path);
    if (!SelectNewFolder(&folder))
        return;
    OSErr err = noErr;
    MenuSpec *spec =
        AddMenuToPreferences(&err, kSideLeft, kContentsFolder, kTitleColourPicture, &folder);
    if (spec == nullptr)
        return;
    AddReadyMenu(&err, spec);
    TestError(err);
    qCInfo(lcMenuChoice, "new title for %s", qPrintable(QFile::decodeName(folder.path)));
}

// The click in progress still uses the title: it goes once the click is over.
void RemoveTitle(ReadyMenu *readyMenu) {
    if (readyMenu == nullptr || CountTitles() < 2)
        return;
    QTimer::singleShot(0, qApp, [readyMenu] {
        for (ReadyMenu *title = firstReadyMenu; title != nullptr; title = title->next) {
            if (title != readyMenu)
                continue;
            MenuSpec *spec = title->menuSpec;
            qCInfo(lcMenuChoice, "title of %s removed",
                   qPrintable(QFile::decodeName(spec->folder.path)));
            RemoveReadyMenu(title);
            TestError(RemoveMenuFromPreferences(spec));
            return;
        }
    });
}

// What an entry of an item's context menu does, once the menus have closed.
void DoContextCommand(const ItemCommandChoice &choice, const MenuItemFiles &files) {
    qCDebug(lcMenuChoice, "context command %d on %s", int(choice.command),
            qPrintable(QFile::decodeName(files.path)));
    DoItemCommand(choice.command, files, choice.application);
}

void ChooseAnotherFolder(ReadyMenu *readyMenu) {
    MenuSpec *spec = readyMenu->menuSpec;
    const QByteArray before = spec->folder.path;
    if (!SelectNewFolder(&spec->folder))
        return;
    // The carried alias record names the old folder: it must not travel on
    // with the new one.
    if (spec->folder.path != before)
        spec->folderAlias.clear();
    DestroyFolderCachedMenu(readyMenu);
}

} // namespace

OSStatus ClickFolderMenu(QPoint where, ReadyMenu *readyMenu, bool suppressOpen, bool forKeyboard) {
    FolderMenu *rootMenu = ReadyFolderMenu(readyMenu);
    SetUpDepthMenus(rootMenu);
    TearDownDepthMenusAtExit();
    // The last title stays: without one nothing of the program could be reached.
    if (QMenu *commands = ApplicationCommandsMenu();
        commands != nullptr && commands->actions().size() >= kRemoveTitleItem)
        commands->actions()[kRemoveTitleItem - 1]->setEnabled(CountTitles() > 1);

    const MenuSelection chosen = PopUpFolderMenu(rootMenu, where, forKeyboard);
    // Read once the menu has closed: the keys held as the choice was made.
    const std::uint16_t modifiers = platform::service<platform::Pointer>().query().modifiers;
    qCDebug(lcMenuChoice, "menu closed: menu %d item %d chosen, modifiers 0x%04x", int(chosen.menu),
            int(chosen.item), unsigned(modifiers));

    const std::optional<FinderAction> contextAction = FinderActionOf(chosen.command);
    if (chosen.command && !contextAction) {
        if (!suppressOpen)
            DoContextCommand(*chosen.command, chosen.files);
    } else if (std::uint16_t(chosen.menu - kFirstDepthMenuID) < kDepthMenuCount) {
        // The empty folder's item, and a root menu's own items, name nothing.
        const QByteArray path =
            FolderItemPath(subMenuRef[chosen.menu - kFirstDepthMenuID], chosen.item);
        if (!suppressOpen && !path.isEmpty()) {
            const FSSpec file{path};
            // A failed request says why, then leaves the menus of this click
            // standing until the next click sets up its own.
            const FinderAction action = contextAction.value_or(FolderItemAction(modifiers));
            if (const OSErr err = DoFinderFile(action, &file, nullptr); err != noErr) {
                qCDebug(lcMenuChoice, "click ended: error %d", int(err));
                ReportFailedChoice(action, file, err);
                return err;
            }
        }
    } else if (chosen.menu == kApplicationCommandsMenuID) {
        SelectKestrelMenuItem(chosen.item);
    } else if (chosen.menu == kFolderCommandsMenuID) {
        SelectFolderCommandsMenuItem(readyMenu, chosen.item);
    }

    TearDownDepthMenus();
    qCDebug(lcMenuChoice, "click ended");
    return noErr;
}

void SelectKestrelMenuItem(std::uint16_t item) {
    const QMenu *menu = ApplicationCommandsMenu();
    const auto last =
        std::uint16_t(menu != nullptr ? menu->actions().size() : qsizetype(kQuitItem));
    if (item == kAboutItem)
        ShowAboutDialog();
    else if (item == kPreferencesItem)
        ShowPreferencesDialog();
    else if (item == kNewTitleItem)
        NewTitleForFolder();
    else if (item == kRemoveTitleItem)
        RemoveTitle(pulledReadyMenu);
    else if (item != 0 && item == last)
        QuitApplicationEventLoop();
}

void SelectFolderCommandsMenuItem(ReadyMenu *readyMenu, std::uint16_t item) {
    switch (item) {
    case kAddItemItem:
        AddItemToMenuFolder(readyMenu);
        break;
    case kOpenFolderItem:
        OpenMenuFolder(readyMenu);
        break;
    case kChooseFolderItem:
        ChooseAnotherFolder(readyMenu);
        break;
    default:
        break;
    }
}
