// A folder menu: its items, showing and hiding it, and what it hears from the
// toolkit. Its layout is in foldermenulayout.cpp, its drawing in
// foldermenupaint.cpp, what the user's hands do in foldermenuinput.cpp.
#include "foldermenus/foldermenu.h"

#include "foldermenus/foldermenuaccessible.h"
#include "foldermenus/foldermenumodel.h"
#include "resources/menus.h"

#include <QAccessible>
#include <QActionEvent>
#include <QApplication>
#include <QLoggingCategory>
#include <QScreen>
#include <QStyle>
#include <QToolTip>
#include <QWindow>

#include <algorithm>

Q_DECLARE_LOGGING_CATEGORY(lcMenuChoice)

FolderMenu::FolderMenu(QWidget *parent) : QMenu(parent), model_(new FolderMenuModel(this)) {
    InstallFolderMenuAccessibility();
    connect(model_, &QAbstractItemModel::modelReset, this, &FolderMenu::modelReset);
}

FolderMenu::~FolderMenu() {
    // What screen readers know of this menu goes while it is still a folder menu;
    // the toolkit would otherwise drop it only once the widget is half gone.
    if (accessible_ != nullptr)
        QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(accessible_));
}

int FolderMenu::itemCount() const {
    return model_->rowCount() + int(own_.size());
}

QString FolderMenu::itemText(int item) const {
    const int index = item - 1;
    if (index < 0 || index >= itemCount())
        return {};
    if (index < model_->rowCount())
        return model_->text(index);
    return own_[std::size_t(index - model_->rowCount())]->text();
}

void FolderMenu::setSubMenu(FolderMenu *menu) {
    subMenu_ = menu;
}

QByteArray FolderItemPath(const FolderMenu *menu, int item) {
    return menu != nullptr ? FolderItemPath(menu->model(), item) : QByteArray();
}

void FolderMenu::invalidate(bool metricsToo) {
    rowsDirty_ = true;
    metricsDirty_ = metricsDirty_ || metricsToo;
    if (isVisible()) {
        fitOnScreen();
        update();
    }
}

void FolderMenu::modelReset() {
    if (filter_.isActive())
        filter_.refresh(itemCount(), [this](int index) { return shownText(index); });
    current_ = -1;
    dropRow_ = -1;
    // A command menu stays open over a folder read late; a submenu does not.
    if (qobject_cast<FolderMenu *>(child_.data()) != nullptr)
        closeChild();
    for (std::size_t own = 0; own < own_.size() && child_ != nullptr; ++own) {
        if (own_[own]->menu() == child_)
            childItem_ = model_->rowCount() + int(own);
    }
    invalidate(true);
    if (childIsOpen())
        current_ = rowOfItem(childItem_);
    else if (filter_.isActive() && isVisible())
        selectFirstRow(); // what was typed while the folder was read is looked for now
    if (accessible_ != nullptr)
        accessible_->forgetItems();
    if (QAccessible::isActive()) {
        QAccessibleEvent reordered(this, QAccessible::ObjectReorder);
        QAccessible::updateAccessibility(&reordered);
    }
}

void FolderMenu::ensureLayout() const {
    if (metricsDirty_)
        measure();
    if (rowsDirty_)
        layOutRows();
}

// Showing

void FolderMenu::openAt(const QPoint &where) {
    parentMenu_ = nullptr;
    place(where, QRect());
}

// Places the menu at `where` (a submenu: beside `openerRow`, both global) and
// shows it. It never covers the title it hangs from: a long menu scrolls.
void FolderMenu::place(QPoint where, const QRect &openerRow) {
    ensurePolished();
    QScreen *screen = QGuiApplication::screenAt(where);
    if (screen == nullptr)
        screen = QGuiApplication::primaryScreen();
    setScreen(screen);
    if (screen_ != screen->availableGeometry()) {
        screen_ = screen->availableGeometry();
        metricsDirty_ = true;
    }
    scroll_ = 0;
    current_ = -1;
    motions_ = 0;
    hasHadMouse_ = false;
    openedAt_ = QCursor::pos();
    ensureLayout();
    QSize size = sizeHint();
    size.setHeight(qMin(size.height(), screen_.height()));
    if (openerRow.isValid()) {
        const int overlap = style()->pixelMetric(QStyle::PM_SubMenuOverlap, nullptr, this);
        where.setX(openerRow.right() + 1 + overlap);
        if (where.x() + size.width() > screen_.right() + 1)
            where.setX(openerRow.left() - size.width() - overlap);
        where.setY(where.y() - contentRect().top());
        if (where.y() + size.height() > screen_.bottom() + 1)
            where.setY(screen_.bottom() + 1 - size.height());
    } else {
        size.setHeight(qMin(size.height(), screen_.bottom() + 1 - where.y()));
    }
    where.setX(std::clamp(where.x(), screen_.left(),
                          qMax(screen_.left(), screen_.right() + 1 - size.width())));
    where.setY(qMax(where.y(), screen_.top()));
    setGeometry(QRect(where, size));
    show();
}

// The rows changed while the menu is open (a folder read late, the filter):
// it keeps its place and grows or shrinks below it.
void FolderMenu::fitOnScreen() {
    ensureLayout();
    QSize size = sizeHint();
    size.setHeight(qMin(size.height(), screen_.bottom() + 1 - y()));
    QPoint where = pos();
    if (where.x() + size.width() > screen_.right() + 1)
        where.setX(qMax(screen_.left(), screen_.right() + 1 - size.width()));
    if (QRect(where, size) != geometry())
        setGeometry(QRect(where, size));
    scrollTo(scroll_);
}

void FolderMenu::showEvent(QShowEvent *event) {
    QMenu::showEvent(event);
    qCDebug(lcMenuChoice, "menu %d shown: %d items", int(GetMenuID(this)), itemCount());
    QAccessibleEvent started(this, QAccessible::PopupMenuStart);
    QAccessible::updateAccessibility(&started);
}

void FolderMenu::hideEvent(QHideEvent *event) {
    QMenu::hideEvent(event);
    closeChild();
    delayTimer_.stop();
    sloppyTimer_.stop();
    scrollTimer_.stop();
    sloppy_ = false;
    // Nobody waits for a folder whose menu has closed.
    model_->abandonReading();
    if (filter_.isActive())
        clearFilter();
    current_ = -1;
    dropRow_ = -1;
    hasDrag_ = false;
    if (FolderMenu *parent = parentMenu_) {
        parentMenu_ = nullptr;
        parent->childClosed(this);
    }
    // Each activation of a window connects it to the application for its focus
    // object, and the matching disconnection is skipped when no window had the
    // focus before: a menu shown at every click would gather one per click.
    if (QWindow *window = windowHandle())
        disconnect(window, SIGNAL(focusObjectChanged(QObject *)), qApp,
                   SLOT(_q_updateFocusObject(QObject *)));
}

bool FolderMenu::event(QEvent *event) {
    switch (event->type()) {
    case QEvent::ToolTip: {
        // A shortened name shows whole in a tooltip.
        const auto *help = static_cast<QHelpEvent *>(event);
        const int row = rowAt(help->pos());
        const int index = row >= 0 ? rows_[std::size_t(row)] : -1;
        const QString text = index >= 0 ? shownText(index) : QString();
        const int room = contentRect().width() -
                         metrics_.textExtra[int(row >= 0 ? kindOfRow(row) : RowKind::Item)];
        if (!text.isEmpty() && fontMetrics().horizontalAdvance(text) > room)
            QToolTip::showText(help->globalPos(), text, this, rowRect(row));
        else
            QToolTip::hideText();
        return true;
    }
    case QEvent::ContextMenu:
        return true; // asked for through the keys and buttons themselves
    default:
        return QMenu::event(event);
    }
}

void FolderMenu::actionEvent(QActionEvent *event) {
    // The menu's own items: kept in order, below the folder items.
    own_.clear();
    for (QAction *action : actions())
        own_.push_back(action);
    invalidate(true);
    QWidget::actionEvent(event);
}

void FolderMenu::changeEvent(QEvent *event) {
    if (event->type() == QEvent::StyleChange || event->type() == QEvent::FontChange ||
        event->type() == QEvent::PaletteChange || event->type() == QEvent::LayoutDirectionChange)
        invalidate(true);
    QMenu::changeEvent(event);
}
