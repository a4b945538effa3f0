#include "resources/statusmessages.h"

#include <QCoreApplication>

namespace {

// Statuses that come from the file system (errno values mapped in core/errors.cpp).
constexpr StatusMessage kFileStatuses[] = {
    {dirFulErr, QT_TRANSLATE_NOOP("StatusMessages", "The folder is full."),
     QT_TRANSLATE_NOOP("StatusMessages", "No more items can be added to this folder.")},
    {dskFulErr, QT_TRANSLATE_NOOP("StatusMessages", "The disk is full."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "Free some space on the disk, or choose a folder on another disk.")},
    {nsvErr, QT_TRANSLATE_NOOP("StatusMessages", "The disk could not be found."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "The disk that holds the item is not mounted. Connect it and try again.")},
    {ioErr, QT_TRANSLATE_NOOP("StatusMessages", "A disk input or output error occurred."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "The item could not be read or written. The disk may be damaged or "
                       "disconnected, or a link may point back to itself.")},
    {bdNamErr, QT_TRANSLATE_NOOP("StatusMessages", "The name is not valid."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "The name is too long or contains characters the file system does not "
                       "accept.")},
    {fnOpnErr, QT_TRANSLATE_NOOP("StatusMessages", "The file is not open."),
     QT_TRANSLATE_NOOP("StatusMessages", "The file was closed before it could be used.")},
    {eofErr, QT_TRANSLATE_NOOP("StatusMessages", "The end of the file was reached too early."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "The file is shorter than its contents say. It may have been cut off or "
                       "damaged.")},
    {posErr, QT_TRANSLATE_NOOP("StatusMessages", "A position in the file is not valid."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "The file asked to move before its own beginning. It is probably "
                       "damaged.")},
    {tmfoErr, QT_TRANSLATE_NOOP("StatusMessages", "Too many files are open."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "The system has run out of file handles. Quit some programs and try "
                       "again.")},
    {fnfErr, QT_TRANSLATE_NOOP("StatusMessages", "The item could not be found."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "It may have been moved, renamed or deleted, or a link may point to "
                       "something that no longer exists.")},
    {wPrErr, QT_TRANSLATE_NOOP("StatusMessages", "The disk is read-only."),
     QT_TRANSLATE_NOOP("StatusMessages", "Nothing can be written to this disk.")},
    {fLckdErr, QT_TRANSLATE_NOOP("StatusMessages", "The file is locked."),
     QT_TRANSLATE_NOOP("StatusMessages", "Unlock the file and try again.")},
    {fBsyErr, QT_TRANSLATE_NOOP("StatusMessages", "The item is in use."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "Another program is using it, or it holds the folder of a title. Close "
                       "that program, or remove the title, and try again.")},
    {dupFNErr, QT_TRANSLATE_NOOP("StatusMessages", "An item with this name already exists."),
     QT_TRANSLATE_NOOP("StatusMessages", "Choose another name, or move the existing item away.")},
    {opWrErr, QT_TRANSLATE_NOOP("StatusMessages", "The file is already open for writing."),
     QT_TRANSLATE_NOOP("StatusMessages", "Another part of the program is writing to it.")},
    {paramErr, QT_TRANSLATE_NOOP("StatusMessages", "A request was not valid."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "The program asked for something that cannot be done. Please report "
                       "this.")},
    {rfNumErr, QT_TRANSLATE_NOOP("StatusMessages", "The file reference is not valid."),
     QT_TRANSLATE_NOOP("StatusMessages", "The file was used after it had been closed.")},
    {permErr, QT_TRANSLATE_NOOP("StatusMessages", "The file cannot be opened this way."),
     QT_TRANSLATE_NOOP("StatusMessages", "It is already open, or its permissions forbid it.")},
    {dirNFErr, QT_TRANSLATE_NOOP("StatusMessages", "The folder could not be found."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "A part of the path is not a folder, or the folder has been removed.")},
    {notAFileErr, QT_TRANSLATE_NOOP("StatusMessages", "The item is not a file."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "It is a folder, a pipe or a device where a file was expected, so it was "
                       "not read.")},
    {fsDataTooBigErr, QT_TRANSLATE_NOOP("StatusMessages", "The file is too large."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "No file of its kind is ever this large, so it was not read. It may be "
                       "damaged.")},
    {afpAccessDenied, QT_TRANSLATE_NOOP("StatusMessages", "Access was denied."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "You do not have permission to use this item. Check its permissions and "
                       "those of the folders that hold it.")},
};

// Statuses of the program's own services.
constexpr StatusMessage kProgramStatuses[] = {
    {unimpErr, QT_TRANSLATE_NOOP("StatusMessages", "This cannot be done here."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "The file system or the desktop does not offer it: a disk may have no "
                       "trash, and marking launchers as trusted needs the desktop's metadata "
                       "store (GVfs).")},
    {memFullErr, QT_TRANSLATE_NOOP("StatusMessages", "There is not enough memory."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "Quit some programs, or make the folder shown in the menu smaller.")},
    {userCanceledErr, QT_TRANSLATE_NOOP("StatusMessages", "The operation was cancelled."),
     QT_TRANSLATE_NOOP("StatusMessages", "Nothing was changed.")},
    {resNotFound, QT_TRANSLATE_NOOP("StatusMessages", "A part of the program is missing."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "A resource built into the program could not be found. Reinstall "
                       "Kestrel Menu.")},
    {procNotFound, QT_TRANSLATE_NOOP("StatusMessages", "No file manager could be found."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "Kestrel Menu asks the desktop's file manager to open items. Install a "
                       "file manager such as Nautilus, Dolphin, Thunar, Nemo or Caja, or set a "
                       "default application for folders.")},
    {connectionInvalid,
     QT_TRANSLATE_NOOP("StatusMessages", "The file manager could not be reached."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "The request could not be sent on the session bus. The file manager may "
                       "have stopped, or the desktop session may be ending.")},
    {errAEEventNotHandled, QT_TRANSLATE_NOOP("StatusMessages", "The file manager cannot do this."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "The file manager in use has no window for item properties.")},
    {errAETimeout, QT_TRANSLATE_NOOP("StatusMessages", "The file manager did not answer in time."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "It may be busy or no longer responding. Try again, or restart it.")},
    {errAEEventFailed,
     QT_TRANSLATE_NOOP("StatusMessages", "The file manager could not carry out the request."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "It refused the request. The item may have gone, or the file manager may "
                       "not handle items of this kind.")},
    {errFSNoMoreItems, QT_TRANSLATE_NOOP("StatusMessages", "There are no more items."),
     QT_TRANSLATE_NOOP("StatusMessages", "The end of the folder was reached.")},
    {kLSApplicationNotFoundErr,
     QT_TRANSLATE_NOOP("StatusMessages", "No application can open this item."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "Install an application for this kind of file, or choose one as its "
                       "default in your desktop's settings. Programs that run in a terminal are "
                       "not picked on their own.")},
    {badDragFlavorErr, QT_TRANSLATE_NOOP("StatusMessages", "A dropped item is not a file."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "Only files and folders on this computer can become menu items.")},
    {dragNotAcceptedErr, QT_TRANSLATE_NOOP("StatusMessages", "The items cannot be dropped here."),
     QT_TRANSLATE_NOOP("StatusMessages",
                       "Only files and folders on this computer can be dropped on a title.")},
};

constexpr std::span<const StatusMessage> kTables[] = {kFileStatuses, kProgramStatuses};

} // namespace

std::span<const std::span<const StatusMessage>> StatusMessageTables() {
    return kTables;
}

QString FallbackErrorText() {
    return QCoreApplication::translate(kStatusMessagesContext,
                                       "No description is available for this error.");
}
