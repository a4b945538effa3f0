#include "titles/titledrops.h"

#include "core/settings.h"
#include "finder/alias.h"
#include "foldermenus/foldercache.h"
#include "titles/readymenu.h"
#include "titles/titleevents.h"
#include "titles/titlewindow.h"

#include <QDropEvent>
#include <QLoggingCategory>
#include <QMimeData>
#include <QPointer>
#include <QRegion>
#include <QSysInfo>
#include <QTimer>

#include <algorithm>
#include <optional>

Q_LOGGING_CATEGORY(lcDrops, "kestrel.drops", QtWarningMsg)

bool menuOpenedByDrag = false;

namespace {

const QString kUriListFormat = QStringLiteral("text/uri-list");

QString TitlePlace(const QWidget *window) {
    return QStringLiteral("%1,%2").arg(window->x()).arg(window->y());
}

// The drag over a title window, as read when it came in. Only one drag runs
// at a time; the drop reads the data afresh.
std::optional<Drag> draggedOver;
// The title window an acceptable drag is over.
QPointer<QWidget> dragOverTitle;
// A drag resting this long on a title opens its menu, so that what it carries
// can be dropped on a folder of that menu (as folders open under a drag in
// file managers).
constexpr int kSpringLoadDelayMs = 700;

void OpenMenuUnderDrag(QWidget *window) {
    ReadyMenu *title = FindReadyMenu(window);
    if (dragOverTitle != window || title == nullptr || pulledReadyMenu != nullptr)
        return;
    qCDebug(lcDrops, "drag rests on title at %s: its menu opens", qPrintable(TitlePlace(window)));
    menuOpenedByDrag = true;
    SelectReadyMenu(title, false);
    menuOpenedByDrag = false;
}

// Draws the drop highlight inside `region` of the window.
void ShowDragHilite(QWidget *window, const QRegion &region) {
    if (auto *titleWindow = dynamic_cast<TitleWindow *>(window))
        titleWindow->setDragHighlight(region);
}

void HideDragHilite(QWidget *window) {
    if (auto *titleWindow = dynamic_cast<TitleWindow *>(window))
        titleWindow->setDragHighlight(QRegion());
}

const DragFlavor *FindFlavor(const DragItem &item, OSType type) {
    for (const DragFlavor &flavor : item.flavors) {
        if (flavor.type == type)
            return &flavor;
    }
    return nullptr;
}

bool IsLocalHost(const QByteArray &host) {
    if (host.isEmpty() || host.compare("localhost", Qt::CaseInsensitive) == 0)
        return true;
    return host.compare(QSysInfo::machineHostName().toUtf8(), Qt::CaseInsensitive) == 0;
}

// The addresses of a URI list: one a line, lines starting with "#" are comments.
QList<QByteArray> UriListEntries(const QByteArray &list) {
    QList<QByteArray> entries;
    for (QByteArray line : list.split('\n')) {
        if (line.endsWith('\r'))
            line.chop(1);
        if (!line.isEmpty() && !line.startsWith('#'))
            entries.append(line);
    }
    return entries;
}

} // namespace

OSErr MenuDragTrackHandler(DragTrackingMessage message, QWidget *window, ReadyMenu *title,
                           const Drag &drag) {
    if (message == kDragTrackingInWindow && CheckDragAcceptable(title, drag)) {
        // The whole window, at every message inside it: showing it again costs nothing.
        const QRegion region(QRect(QPoint(0, 0), window->size()));
        ShowDragHilite(window, region);
    } else {
        HideDragHilite(window);
    }
    return noErr;
}

OSErr MenuDragReceiveHandler(QWidget *, ReadyMenu *title, const Drag &drag) {
    if (!CheckDragAcceptable(title, drag))
        return dragNotAcceptedErr;
    return AcceptDrag(title, drag);
}

bool CheckDragAcceptable(const ReadyMenu *title, const Drag &drag) {
    // No items at all: acceptable, and the drop does nothing.
    return title != nullptr && title->menuSpec->contents == kContentsFolder &&
           DragHoldsOnlyLocalFiles(drag);
}

OSErr AcceptDrag(ReadyMenu *title, const Drag &drag) {
    if (title == nullptr)
        return paramErr;
    if (title->menuSpec->contents != kContentsFolder)
        return DragHoldsOnlyLocalFiles(drag) ? OSErr(noErr) : OSErr(badDragFlavorErr);
    // The next opening of the menu lists each new link.
    return LinkDroppedItems(title->menuSpec->folder, drag,
                            [title] { DestroyFolderCachedMenu(title); });
}

bool DragHoldsOnlyLocalFiles(const Drag &drag) {
    return std::all_of(drag.items.begin(), drag.items.end(), [](const DragItem &item) {
        return FindFlavor(item, kDragFlavorTypeHFS) != nullptr;
    });
}

OSErr LinkDroppedItems(const FSSpec &folder, const Drag &drag,
                       const std::function<void()> &linked) {
    for (const DragItem &item : drag.items) {
        const DragFlavor *flavor = FindFlavor(item, kDragFlavorTypeHFS);
        if (flavor == nullptr)
            return badDragFlavorErr;
        const FSSpec spec{flavor->data};
        if (const OSErr err = CreateAlias(&spec, &folder); err != noErr)
            return err;
        linked();
    }
    return noErr;
}

QByteArray LocalPathFromUri(const QByteArray &uri) {
    if (uri.left(5).toLower() != "file:")
        return {};
    QByteArray rest = uri.mid(5);
    // Neither a query nor a fragment is part of the path; a "?" or "#" in a
    // name arrives escaped.
    for (qsizetype i = 0; i < rest.size(); ++i) {
        if (rest[i] == '?' || rest[i] == '#') {
            rest.truncate(i);
            break;
        }
    }
    if (rest.startsWith("//")) {
        const qsizetype slash = rest.indexOf('/', 2);
        if (slash < 0 || !IsLocalHost(rest.mid(2, slash - 2)))
            return {};
        rest = rest.mid(slash);
    }
    if (!rest.startsWith('/'))
        return {};
    const QByteArray path = QByteArray::fromPercentEncoding(rest);
    // No file system name holds a NUL byte.
    if (path.contains('\0'))
        return {};
    return path;
}

Drag DragFromMimeData(const QMimeData *data) {
    Drag drag;
    if (data == nullptr)
        return drag;
    if (data->hasFormat(kUriListFormat)) {
        // The other formats of such a drag are the same items told another way.
        for (const QByteArray &uri : UriListEntries(data->data(kUriListFormat))) {
            DragItem item;
            const QByteArray path = LocalPathFromUri(uri);
            if (!path.isEmpty())
                item.flavors.push_back({kDragFlavorTypeHFS, path});
            item.flavors.push_back({kDragFlavorTypeURL, uri});
            drag.items.push_back(std::move(item));
        }
        return drag;
    }
    const QStringList formats = data->formats();
    if (formats.isEmpty())
        return drag;
    DragItem item;
    for (const QString &format : formats)
        item.flavors.push_back({kDragFlavorTypeMIME, format.toUtf8()});
    drag.items.push_back(std::move(item));
    return drag;
}

bool DragIsOverATitle() {
    return dragOverTitle != nullptr;
}

Qt::DropAction ChooseDropAction(Qt::DropActions possible) {
    if (possible & Qt::LinkAction)
        return Qt::LinkAction;
    if (possible & Qt::CopyAction)
        return Qt::CopyAction;
    return Qt::IgnoreAction;
}

void TitleDragEnterEvent(QWidget *window, QDragEnterEvent *event) {
    const Qt::DropAction action = ChooseDropAction(event->possibleActions());
    if (action == Qt::IgnoreAction) {
        // A drag that may only move its items is not for a title.
        qCDebug(lcDrops, "drag over title at %s offers neither a copy nor a link",
                qPrintable(TitlePlace(window)));
        event->ignore();
        return;
    }
    draggedOver = DragFromMimeData(event->mimeData());
    ReadyMenu *title = FindReadyMenu(window);
    MenuDragTrackHandler(kDragTrackingEnterHandler, window, title, *draggedOver);
    MenuDragTrackHandler(kDragTrackingEnterWindow, window, title, *draggedOver);
    qCDebug(lcDrops, "drag entered title at %s: %d items, %s", qPrintable(TitlePlace(window)),
            int(draggedOver->items.size()),
            CheckDragAcceptable(title, *draggedOver) ? "acceptable" : "refused");
    // Taken in, so that the moves come here; each move says whether a drop would be taken.
    event->setDropAction(action);
    event->accept();
    if (CheckDragAcceptable(title, *draggedOver)) {
        dragOverTitle = window;
        QTimer::singleShot(kSpringLoadDelayMs, window, [window] { OpenMenuUnderDrag(window); });
    }
}

void TitleDragMoveEvent(QWidget *window, QDragMoveEvent *event) {
    if (!draggedOver)
        draggedOver = DragFromMimeData(event->mimeData());
    ReadyMenu *title = FindReadyMenu(window);
    MenuDragTrackHandler(kDragTrackingInWindow, window, title, *draggedOver);
    const Qt::DropAction action = ChooseDropAction(event->possibleActions());
    if (action != Qt::IgnoreAction && CheckDragAcceptable(title, *draggedOver)) {
        event->setDropAction(action);
        event->accept();
    } else {
        event->ignore();
    }
}

void TitleDragLeaveEvent(QWidget *window, QDragLeaveEvent *event) {
    const Drag drag = draggedOver.value_or(Drag());
    draggedOver.reset();
    dragOverTitle = nullptr;
    ReadyMenu *title = FindReadyMenu(window);
    MenuDragTrackHandler(kDragTrackingLeaveWindow, window, title, drag);
    MenuDragTrackHandler(kDragTrackingLeaveHandler, window, title, drag);
    event->accept();
}

void TitleDropEvent(QWidget *window, QDropEvent *event) {
    draggedOver.reset();
    dragOverTitle = nullptr;
    const Drag drag = DragFromMimeData(event->mimeData());
    ReadyMenu *title = FindReadyMenu(window);
    const Qt::DropAction action = ChooseDropAction(event->possibleActions());
    const OSErr status = action != Qt::IgnoreAction ? MenuDragReceiveHandler(window, title, drag)
                                                    : OSErr(dragNotAcceptedErr);
    if (status == noErr) {
        event->setDropAction(action);
        event->accept();
        qCDebug(lcDrops, "drop on title at %s: %d items linked", qPrintable(TitlePlace(window)),
                int(drag.items.size()));
    } else {
        event->ignore();
        if (status == dragNotAcceptedErr)
            qCDebug(lcDrops, "drop on title at %s refused", qPrintable(TitlePlace(window)));
        else
            qCWarning(lcDrops, "drop on title at %s stopped with status %d",
                      qPrintable(TitlePlace(window)), int(status));
    }
    // The drag is over: the window is left as after any drag.
    MenuDragTrackHandler(kDragTrackingLeaveWindow, window, title, drag);
    MenuDragTrackHandler(kDragTrackingLeaveHandler, window, title, drag);
}
