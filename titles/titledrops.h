// Dropping files and folders on a title: each becomes a link in the title's
// folder, so it is listed in the title's menu from then on.
//
// The handlers work on a Drag, a plain value that stands for the drag in
// progress: the title window builds one from the drag's data and passes Qt's
// drag events on as tracking messages.
#pragma once

#include "core/settings.h"
#include "core/types.h"

#include <QByteArray>
#include <Qt>

#include <functional>
#include <vector>

class QDragEnterEvent;
class QDragLeaveEvent;
class QDragMoveEvent;
class QDropEvent;
class QMimeData;
class QWidget;
struct ReadyMenu;

// One form in which a dragged item is offered, and its data.
struct DragFlavor {
    OSType type;
    QByteArray data;
};

struct DragItem {
    std::vector<DragFlavor> flavors;
};

// A drag: its items, in the order the drag source gave them.
struct Drag {
    std::vector<DragItem> items;
};

// A local file or folder; the data is its absolute path, the file system's bytes.
inline constexpr OSType kDragFlavorTypeHFS = FourCC("hfs ");
// Any address from a URI list, as it was written there.
inline constexpr OSType kDragFlavorTypeURL = FourCC("url ");
// A data format the drag offers other than a URI list; the data is the format's name.
inline constexpr OSType kDragFlavorTypeMIME = FourCC("mime");

// Where the drag stands as far as one title window is concerned.
enum DragTrackingMessage : std::int16_t {
    kDragTrackingEnterHandler = 1,
    kDragTrackingEnterWindow = 2,
    kDragTrackingInWindow = 3,
    kDragTrackingLeaveWindow = 4,
    kDragTrackingLeaveHandler = 5,
};

// Highlights the whole title while an acceptable drag is over it. Returns 0.
OSErr MenuDragTrackHandler(DragTrackingMessage message, QWidget *window, ReadyMenu *title,
                           const Drag &drag);
// A drop on the title: dragNotAcceptedErr for a drag it does not take, else
// what AcceptDrag returns.
OSErr MenuDragReceiveHandler(QWidget *window, ReadyMenu *title, const Drag &drag);
// True when the title shows a folder and every item is a local file or
// folder. A drag with no items at all is acceptable.
bool CheckDragAcceptable(const ReadyMenu *title, const Drag &drag);
// Links every item into the title's folder, in order, and drops the title's
// cached menu after each. Stops at the first failure and returns its status;
// the links made before it stay.
OSErr AcceptDrag(ReadyMenu *title, const Drag &drag);

// Whether every item of the drag is a local file or folder (true for none).
bool DragHoldsOnlyLocalFiles(const Drag &drag);
// What a drop on a title and on a folder item of a menu both do: every item
// becomes a link in `folder`, in order, and `linked` is called after each.
// Stops at the first failure (badDragFlavorErr for an item that is not a
// local file) and returns its status; the links made before it stay.
OSErr LinkDroppedItems(const FSSpec &folder, const Drag &drag, const std::function<void()> &linked);

// The drag that `data` describes. A URI list gives one item per address (a
// local file's address also gives its path); without one the drag is a
// single item offering each of its formats.
Drag DragFromMimeData(const QMimeData *data);
// The path of a "file:" address that names a file on this machine, percent
// escapes undone byte for byte; empty for anything else.
QByteArray LocalPathFromUri(const QByteArray &uri);
// What the drop does as far as the drag source is concerned: a link where the
// source allows it, else a copy; never a move, which would have the source
// delete its file. IgnoreAction when the source allows neither.
Qt::DropAction ChooseDropAction(Qt::DropActions possible);

// True while the open menu was opened by a drag resting on its title: it closes
// once the drag is over neither the menus nor a title.
extern bool menuOpenedByDrag;
// Whether an acceptable drag is over a title window now.
bool DragIsOverATitle();

// The title window's drag events, translated into the handlers' messages. A
// drag that rests on a title opens its menu.
void TitleDragEnterEvent(QWidget *window, QDragEnterEvent *event);
void TitleDragMoveEvent(QWidget *window, QDragMoveEvent *event);
void TitleDragLeaveEvent(QWidget *window, QDragLeaveEvent *event);
void TitleDropEvent(QWidget *window, QDropEvent *event);
