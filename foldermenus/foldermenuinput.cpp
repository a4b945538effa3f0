// What the user's hands do in a folder menu: the keyboard, the pointer, the
// wheel, and the submenus they open. The timings and the forgiving ("sloppy")
// move towards an open submenu are the style's, as in every menu of the desktop.
#include "foldermenus/foldermenu.h"

#include "foldermenus/foldermenumodel.h"

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QMetaMethod>
#include <QMouseEvent>
#include <QStyle>
#include <QWheelEvent>

#include <algorithm>

namespace {

// The menu the mouse button went down in (or was dragged through with the
// button held): a release counts only there.
QPointer<FolderMenu> mouseDownMenu;

int StyleHint(const QWidget *widget, QStyle::StyleHint hint) {
    return widget->style()->styleHint(hint, nullptr, widget);
}

bool IsTypedText(const QString &text) {
    return !text.isEmpty() &&
           std::all_of(text.begin(), text.end(), [](QChar c) { return c.isPrint(); });
}

} // namespace

bool IsKeyHeldWhileChoosing(int key) {
    return key == Qt::Key_Alt || key == Qt::Key_AltGr || key == Qt::Key_Meta ||
           key == Qt::Key_Super_L || key == Qt::Key_Super_R;
}

// Selection

void FolderMenu::setCurrentRow(int row, int popupDelay) {
    ensureLayout();
    if (row >= 0 && (row >= rowCount() || !isSelectable(row)))
        row = -1;
    const int previous = current_;
    if (row != previous) {
        if (previous >= 0 && previous < rowCount())
            update(rowRect(previous));
        current_ = row;
        if (row >= 0) {
            update(rowRect(row));
            if (QAccessible::isActive()) {
                QAccessibleEvent focus(this, QAccessible::Focus);
                focus.setChild(row);
                QAccessible::updateAccessibility(&focus);
            }
        }
    }
    if (row >= 0 && popupDelay >= 0 && isVisible()) {
        const int index = rows_[std::size_t(row)];
        if (!leadsFurther(row)) {
            delayTimer_.stop();
        } else if (popupDelay == 0) {
            openChild(false);
        } else if (!(childIsOpen() && childItem_ == index) &&
                   !(delayTimer_.isActive() && delayItem_ == index)) {
            delayItem_ = index;
            delayTimer_.start(popupDelay, this);
        }
    }
    if (childIsOpen() && row != previous) {
        if (popupDelay < 0)
            closeChild();
        else if ((row < 0 || !leadsFurther(row)) && sloppy_ && !sloppyTimer_.isActive())
            sloppyTimer_.start(StyleHint(this, QStyle::SH_Menu_SubMenuSloppyCloseTimeout), this);
    }
}

int FolderMenu::nextSelectableRow(int from, int step, bool wrap) const {
    const int count = rowCount();
    for (int tried = 0, row = from; tried < count; ++tried) {
        row += step;
        if (row < 0 || row >= count) {
            if (!wrap)
                return -1;
            row = row < 0 ? count - 1 : 0;
        }
        if (row == from)
            return -1;
        if (isSelectable(row))
            return row;
    }
    return -1;
}

void FolderMenu::selectFirstRow() {
    const int row = nextSelectableRow(-1, 1, false);
    setCurrentRow(row, -1);
    if (row >= 0)
        ensureVisible(row);
}

void FolderMenu::moveSelection(int step) {
    ensureLayout();
    int row;
    if (current_ < 0)
        row = nextSelectableRow(step > 0 ? -1 : rowCount(), step, false);
    else
        row = nextSelectableRow(current_, step, StyleHint(this, QStyle::SH_Menu_SelectionWrap));
    if (row < 0)
        return;
    setCurrentRow(row, -1);
    ensureVisible(row);
}

// Page Down brings the row below the page to the top, Page Up the row above it
// to the bottom; at either end they go to the first or last item.
void FolderMenu::pageSelection(int pages) {
    ensureLayout();
    const QRect view = viewport();
    const int top = qMax(0, rowAt(QPoint(view.left(), view.top())));
    const int bottom = qMax(top, rowAt(QPoint(view.left(), view.bottom())));
    const int page = qMax(1, bottom - top);
    const int from = current_ >= 0 ? current_ : top;
    int row = std::clamp(from + pages * page, 0, rowCount() - 1);
    if (!isSelectable(row)) {
        const int onward = nextSelectableRow(row, pages, false);
        row = onward >= 0 ? onward : nextSelectableRow(row, -pages, false);
    }
    if (row < 0)
        return;
    setCurrentRow(row, -1);
    if (pages > 0)
        scrollRowToTop(row);
    ensureVisible(row);
}

// Submenus and command menus

bool FolderMenu::childIsOpen() const {
    return child_ != nullptr && child_->isVisible();
}

void FolderMenu::openChild(bool selectFirst) {
    delayTimer_.stop();
    if (child_ != nullptr && (current_ < 0 || childItem_ != rows_[std::size_t(current_)]))
        closeChild();
    if (current_ < 0 || !leadsFurther(current_))
        return;
    const bool folder = kindOfRow(current_) == RowKind::Folder;
    if (folder && subMenu_ == nullptr)
        return; // a menu shown outside a click leads nowhere
    if (!childIsOpen()) {
        const int index = rows_[std::size_t(current_)];
        const QRect row = rowRect(current_);
        const QRect opener(mapToGlobal(row.topLeft()), row.size());
        childItem_ = index;
        sloppy_ = true;
        if (folder) {
            FolderMenu *menu = subMenu_;
            menu->parentMenu_ = this;
            child_ = menu;
            // The menu-opening event: the submenu fills itself from this row.
            Q_EMIT menu->aboutToShow();
            if (child_ != menu || current_ < 0)
                return;
            menu->place(opener.topLeft(), opener);
        } else {
            QMenu *menu = own_[std::size_t(index - model_->rowCount())]->menu();
            child_ = menu;
            connect(
                menu, &QMenu::aboutToHide, this, [this, menu] { childClosed(menu); },
                Qt::SingleShotConnection);
            const int overlap = style()->pixelMetric(QStyle::PM_SubMenuOverlap, nullptr, this);
            QPoint where(opener.right() + 1 + overlap, opener.top());
            if (where.x() + menu->sizeHint().width() > screen_.right() + 1)
                where.setX(opener.left() - menu->sizeHint().width() - overlap);
            if (!menu->actions().isEmpty())
                where.ry() -= menu->actionGeometry(menu->actions().first()).top();
            menu->popup(where);
        }
    }
    if (!selectFirst || !childIsOpen())
        return;
    if (auto *menu = qobject_cast<FolderMenu *>(child_.data()))
        menu->selectFirstRow();
    else if (auto *command = qobject_cast<QMenu *>(child_.data()); !command->actions().isEmpty())
        command->setActiveAction(command->actions().first());
}

void FolderMenu::closeChild() {
    delayTimer_.stop();
    sloppyTimer_.stop();
    sloppy_ = false;
    childItem_ = -1;
    if (QWidget *child = child_) {
        child_ = nullptr;
        child->close();
    }
}

void FolderMenu::childClosed(QWidget *child) {
    if (child_ != child)
        return;
    child_ = nullptr;
    childItem_ = -1;
    sloppy_ = false;
    sloppyTimer_.stop();
}

// The pointer reached the open submenu: the row that opened it stays chosen.
void FolderMenu::childEntered() {
    sloppyTimer_.stop();
    if (childIsOpen() && (current_ < 0 || rows_[std::size_t(current_)] != childItem_)) {
        const int row = rowOfItem(childItem_);
        if (row >= 0) {
            if (current_ >= 0)
                update(rowRect(current_));
            current_ = row;
            update(rowRect(row));
        }
    }
    if (parentMenu_ != nullptr)
        parentMenu_->childEntered();
}

// The pointer wandered from an open submenu's row and did not reach the
// submenu in time: the submenu closes, and what is under the pointer counts.
void FolderMenu::sloppyTimeout() {
    sloppyTimer_.stop();
    const bool hasPointer = geometry().contains(pointer_);
    if (childIsOpen() && hasPointer && current_ >= 0 && rows_[std::size_t(current_)] == childItem_)
        return;
    if (!isVisible())
        return;
    closeChild();
    setCurrentRow(hasPointer ? rowAt(mapFromGlobal(pointer_)) : -1, 0);
}

void FolderMenu::closeAll() {
    FolderMenu *root = this;
    while (root->parentMenu_ != nullptr)
        root = root->parentMenu_;
    // Newest first, as the toolkit stacks its pop-ups.
    std::vector<QPointer<QWidget>> chain;
    for (QWidget *menu = root; menu != nullptr;) {
        chain.emplace_back(menu);
        auto *folderMenu = qobject_cast<FolderMenu *>(menu);
        menu = folderMenu != nullptr && folderMenu->childIsOpen() ? folderMenu->child_.data()
                                                                  : nullptr;
    }
    for (auto menu = chain.rbegin(); menu != chain.rend(); ++menu) {
        if (*menu != nullptr)
            (*menu)->close();
    }
}

void FolderMenu::choose(int row, Qt::MouseButton button) {
    const int item = rows_[std::size_t(row)] + 1;
    if (button == Qt::RightButton &&
        isSignalConnected(QMetaMethod::fromSignal(&FolderMenu::contextMenuRequested))) {
        Q_EMIT contextMenuRequested(item, pointer_);
        return;
    }
    QPointer<FolderMenu> guard(this);
    Q_EMIT itemChosen(item);
    if (guard != nullptr)
        closeAll();
}

// Typing

void FolderMenu::typeIntoFilter(const QString &text) {
    filter_.type(text, itemCount(), [this](int index) { return shownText(index); });
    filterChanged();
    selectFirstRow();
}

void FolderMenu::backspaceFilter() {
    if (filter_.backspace(itemCount(), [this](int index) { return shownText(index); })) {
        filterChanged();
        selectFirstRow();
    }
}

// Escape first clears what was typed; the item that was highlighted stays so.
void FolderMenu::clearFilter() {
    const int item = activeItem();
    filter_.clear();
    filterChanged();
    if (item > 0)
        setActiveItem(item);
}

void FolderMenu::filterChanged() {
    closeChild();
    current_ = -1;
    scroll_ = 0;
    rowsDirty_ = true;
    if (isVisible())
        fitOnScreen();
    update();
}

// The keyboard

void FolderMenu::keyPressEvent(QKeyEvent *event) {
    ensureLayout();
    int key = event->key();
    if (isRightToLeft() && (key == Qt::Key_Left || key == Qt::Key_Right))
        key = key == Qt::Key_Left ? Qt::Key_Right : Qt::Key_Left;
    const bool shift = (event->modifiers() & Qt::ShiftModifier) != 0;
    if (IsKeyHeldWhileChoosing(key))
        return;
    switch (key) {
    case Qt::Key_Up:
    case Qt::Key_Backtab:
        moveSelection(-1);
        return;
    case Qt::Key_Down:
    case Qt::Key_Tab:
        moveSelection(1);
        return;
    case Qt::Key_Home:
    case Qt::Key_End: {
        const bool home = key == Qt::Key_Home;
        const int row = nextSelectableRow(home ? -1 : rowCount(), home ? 1 : -1, false);
        if (row >= 0) {
            setCurrentRow(row, -1);
            ensureVisible(row);
        }
        return;
    }
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        pageSelection(key == Qt::Key_PageDown ? 1 : -1);
        return;
    case Qt::Key_Right:
        if (current_ >= 0 && leadsFurther(current_))
            openChild(true);
        return;
    case Qt::Key_Left:
        if (parentMenu_ != nullptr)
            close();
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (current_ < 0)
            selectFirstRow();
        else if (leadsFurther(current_))
            openChild(true);
        else
            choose(current_, Qt::NoButton);
        return;
    case Qt::Key_Space:
        // Space chooses a folder item itself; it never goes into the filter.
        if (current_ >= 0 && kindOfRow(current_) != RowKind::Command)
            choose(current_, Qt::NoButton);
        return;
    case Qt::Key_Escape:
        if (filter_.isActive())
            clearFilter();
        else
            close();
        return;
    case Qt::Key_Backspace:
        backspaceFilter();
        return;
    case Qt::Key_Menu:
    case Qt::Key_F10:
        if ((key == Qt::Key_Menu || shift) && current_ >= 0 &&
            kindOfRow(current_) != RowKind::Command)
            Q_EMIT contextMenuRequested(activeItem(), mapToGlobal(rowRect(current_).center()));
        return;
    default:
        break;
    }
    const Qt::KeyboardModifiers held =
        event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (held == Qt::NoModifier && IsTypedText(event->text())) {
        typeIntoFilter(event->text());
        return;
    }
    event->ignore();
}

// The pointer

// The menus of a click form a chain, and the toolkit gives the pointer to the
// newest. What happens over an older one is passed to it.
FolderMenu *FolderMenu::olderMenuAt(const QPoint &global) const {
    for (FolderMenu *older = parentMenu_; older != nullptr; older = older->parentMenu_) {
        if (older->geometry().contains(global))
            return older;
    }
    return nullptr;
}

bool FolderMenu::passToOlderMenu(QMouseEvent *event) {
    const QPoint global = event->globalPosition().toPoint();
    pointer_ = global;
    if (geometry().contains(global))
        return false;
    FolderMenu *older = olderMenuAt(global);
    if (older == nullptr || (event->type() == QEvent::MouseButtonRelease && mouseDownMenu != older))
        return false;
    PassMouseEvent(older, *event);
    return true;
}

void PassMouseEvent(FolderMenu *menu, const QMouseEvent &event) {
    const QPointF local = menu->mapFromGlobal(event.globalPosition());
    QMouseEvent passed(event.type(), local, local, event.globalPosition(), event.button(),
                       event.buttons(), event.modifiers(), event.pointingDevice());
    QCoreApplication::sendEvent(menu, &passed);
}

bool FolderMenu::pointerHasMoved(const QPoint &global) const {
    return motions_ > 6 ||
           QApplication::startDragDistance() < (openedAt_ - global).manhattanLength();
}

void FolderMenu::mousePressEvent(QMouseEvent *event) {
    if (passToOlderMenu(event))
        return;
    const QPoint pos = event->position().toPoint();
    if (!rect().contains(pos)) {
        closeAll(); // a press outside every menu of the click
        return;
    }
    if (delayTimer_.isActive() && event->button() == Qt::LeftButton)
        openChild(false);
    mouseDownMenu = this;
    pressRow_ = rowAt(pos);
    pressedAt_ = event->globalPosition().toPoint();
    dragRequested_ = false;
    // The right button asks for the item's context menu, not for its submenu.
    setCurrentRow(pressRow_, event->button() == Qt::RightButton ? -1 : 20);
}

void FolderMenu::mouseReleaseEvent(QMouseEvent *event) {
    if (passToOlderMenu(event))
        return;
    const QPoint pos = event->position().toPoint();
    const QPoint global = event->globalPosition().toPoint();
    if (mouseDownMenu != this) {
        mouseDownMenu = nullptr;
        // The press on the title, dragged and let go away from every menu.
        FolderMenu *root = this;
        while (root->parentMenu_ != nullptr)
            root = root->parentMenu_;
        if (!rect().contains(pos) && olderMenuAt(global) == nullptr &&
            (global - root->openedAt_).manhattanLength() >= QApplication::startDragDistance())
            closeAll();
        return;
    }
    mouseDownMenu = nullptr;
    pressRow_ = -1;
    const int row = rowAt(pos);
    if (row >= 0 && row == current_) {
        // A folder item let go of is chosen itself; a command item only leads on.
        if (kindOfRow(row) != RowKind::Command)
            choose(row, event->button());
    } else if ((row < 0 || isSelectable(row)) && pointerHasMoved(global)) {
        closeAll();
    }
}

void FolderMenu::mouseMoveEvent(QMouseEvent *event) {
    if (!isVisible() || passToOlderMenu(event))
        return;
    const QPoint pos = event->position().toPoint();
    const QPoint global = event->globalPosition().toPoint();
    if (rect().contains(pos) && parentMenu_ != nullptr)
        parentMenu_->childEntered();
    ++motions_;
    if (!pointerHasMoved(global))
        return;
    hasHadMouse_ = hasHadMouse_ || rect().contains(pos);

    // Resting on a scroll arrow scrolls, as long as no submenu is open.
    const int direction = childIsOpen()                       ? 0
                          : scrollerRect(true).contains(pos)  ? -1
                          : scrollerRect(false).contains(pos) ? 1
                                                              : 0;
    if (direction != 0) {
        scrollDirection_ = direction;
        if (!scrollTimer_.isActive())
            scrollTimer_.start(50, this);
        return;
    }
    scrollTimer_.stop();

    if ((event->buttons() & Qt::LeftButton) != 0 && pressRow_ >= 0 && !dragRequested_ &&
        mouseDownMenu == this &&
        (global - pressedAt_).manhattanLength() >= QApplication::startDragDistance()) {
        dragRequested_ = true;
        Q_EMIT dragStartRequested(rows_[std::size_t(pressRow_)] + 1);
    }

    const int row = rowAt(pos);
    if ((row < 0 || kindOfRow(row) == RowKind::Separator) && !sloppy_) {
        if (hasHadMouse_ || !childIsOpen())
            setCurrentRow(-1, -1);
        return;
    }
    if (event->buttons() != Qt::NoButton)
        mouseDownMenu = this;
    if (auto *child = qobject_cast<FolderMenu *>(child_.data()))
        child->setCurrentRow(-1, -1);
    const int delay = StyleHint(this, QStyle::SH_Menu_SubMenuPopupDelay);
    if (!sloppy_) {
        setCurrentRow(row, delay);
        return;
    }
    // Towards an open submenu the pointer may cross other rows: the submenu
    // stays until the style's time-out, the rows crossed are only highlighted
    // if the style says so.
    const int timeout = StyleHint(this, QStyle::SH_Menu_SubMenuSloppyCloseTimeout);
    if (row >= 0 && rows_[std::size_t(row)] == childItem_) {
        sloppyTimer_.start(timeout, this);
        setCurrentRow(row, delay);
        return;
    }
    if (!sloppyTimer_.isActive())
        sloppyTimer_.start(timeout, this);
    if (StyleHint(this, QStyle::SH_Menu_SubMenuSloppySelectOtherActions))
        setCurrentRow(row, delay);
}

void FolderMenu::wheelEvent(QWheelEvent *event) {
    const QPoint global = event->globalPosition().toPoint();
    if (!geometry().contains(global)) {
        if (FolderMenu *older = olderMenuAt(global)) {
            const QPointF local = older->mapFromGlobal(event->globalPosition());
            QWheelEvent passed(local, event->globalPosition(), event->pixelDelta(),
                               event->angleDelta(), event->buttons(), event->modifiers(),
                               event->phase(), event->inverted());
            QCoreApplication::sendEvent(older, &passed);
        }
        return;
    }
    if (event->angleDelta().y() != 0)
        scrollByRows(event->angleDelta().y() > 0 ? -1 : 1);
}

void FolderMenu::enterEvent(QEnterEvent *event) {
    motions_ = -1; // the move that comes with entering is not the user's
    if (parentMenu_ != nullptr)
        parentMenu_->childEntered();
    QWidget::enterEvent(event);
}

void FolderMenu::leaveEvent(QEvent *event) {
    if (!childIsOpen() && current_ >= 0)
        setCurrentRow(-1, -1);
    QWidget::leaveEvent(event);
}

void FolderMenu::timerEvent(QTimerEvent *event) {
    if (event->timerId() == delayTimer_.timerId()) {
        delayTimer_.stop();
        if (current_ >= 0 && rows_[std::size_t(current_)] == delayItem_)
            openChild(false);
    } else if (event->timerId() == sloppyTimer_.timerId()) {
        sloppyTimeout();
    } else if (event->timerId() == scrollTimer_.timerId()) {
        const int before = scroll_;
        scrollByRows(scrollDirection_);
        if (scroll_ == before)
            scrollTimer_.stop();
    } else {
        QMenu::timerEvent(event);
    }
}
