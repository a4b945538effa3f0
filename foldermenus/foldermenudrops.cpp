// Files dragged over a folder menu: a folder item under them is highlighted,
// and dropped there they go to the menu's drop handler. The menu takes them
// as a title does: local files only, a copy or a link, never a move. The
// drag may be one out of the menus themselves, or one from another program
// that rested on the title until its menu opened.
#include "foldermenus/foldermenu.h"

#include "foldermenus/foldermenumodel.h"
#include "titles/titledrops.h"

#include <QDropEvent>
#include <QLoggingCategory>
#include <QMimeData>

Q_DECLARE_LOGGING_CATEGORY(lcMenuChoice)

void FolderMenu::setDropHandler(DropHandler handler) {
    dropHandler_ = std::move(handler);
    setAcceptDrops(dropHandler_ != nullptr);
}

int FolderMenu::dropRowAt(const QPoint &pos, Qt::DropActions possible) const {
    const int row = rowAt(pos);
    if (row < 0 || !dragHasLocalFiles_ || dropHandler_ == nullptr ||
        ChooseDropAction(possible) == Qt::IgnoreAction)
        return -1;
    const FolderEntry *entry = model_->entry(rows_[std::size_t(row)]);
    return entry != nullptr && entry->kind == FolderEntry::Kind::Folder ? row : -1;
}

void FolderMenu::setDropRow(int row) {
    if (row == dropRow_)
        return;
    dropRow_ = row;
    update(); // the highlight moves from the current item to the drop's, or back
    if (row >= 0)
        qCDebug(lcMenuChoice, "files over %s", qPrintable(itemText(rows_[std::size_t(row)] + 1)));
}

void FolderMenu::dragEnterEvent(QDragEnterEvent *event) {
    const Qt::DropAction action = ChooseDropAction(event->possibleActions());
    if (dropHandler_ == nullptr || action == Qt::IgnoreAction)
        return event->ignore();
    // Taken in whatever is under it, so that every move over the rows comes
    // here; each move says whether a drop there would be taken. What it
    // carries stays the same until it leaves.
    const Drag drag = DragFromMimeData(event->mimeData());
    dragHasLocalFiles_ = !drag.items.empty() && DragHoldsOnlyLocalFiles(drag);
    ensureLayout();
    setDropRow(dropRowAt(event->position().toPoint(), event->possibleActions()));
    hasDrag_ = true;
    event->setDropAction(action);
    event->accept();
}

void FolderMenu::dragMoveEvent(QDragMoveEvent *event) {
    ensureLayout();
    const QPoint pos = event->position().toPoint();
    const int row = dropRowAt(pos, event->possibleActions());
    setDropRow(row);
    if (row < 0) {
        event->ignore();
        return;
    }
    event->setDropAction(ChooseDropAction(event->possibleActions()));
    event->accept(rowRect(row));
}

void FolderMenu::dragLeaveEvent(QDragLeaveEvent *event) {
    setDropRow(-1);
    hasDrag_ = false;
    event->accept();
}

void FolderMenu::dropEvent(QDropEvent *event) {
    ensureLayout();
    const int row = dropRowAt(event->position().toPoint(), event->possibleActions());
    setDropRow(-1);
    hasDrag_ = false;
    if (row < 0 || dropHandler_(rows_[std::size_t(row)] + 1, event->mimeData()) != noErr) {
        event->ignore();
        return;
    }
    event->setDropAction(ChooseDropAction(event->possibleActions()));
    event->accept();
}
