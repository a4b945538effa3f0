// Layout, drawing and showing of a folder menu; what the user's hands do is
// in foldermenuinput.cpp.
#include "foldermenus/foldermenu.h"

#include "foldermenus/foldermenuaccessible.h"
#include "foldermenus/foldermenumodel.h"
#include "foldermenus/menutext.h"
#include "resources/menus.h"

#include <QAccessible>
#include <QActionEvent>
#include <QApplication>
#include <QLoggingCategory>
#include <QScreen>
#include <QStyleOptionMenuItem>
#include <QStylePainter>
#include <QToolTip>
#include <QWindow>

#include <algorithm>

Q_DECLARE_LOGGING_CATEGORY(lcMenuChoice)

namespace {

// The names measured to find a menu's width: the longest this many. A name
// much shorter than these that is still wider is shortened like any other.
constexpr std::size_t kMeasuredNames = 64;
// No item's text is wider than this many average characters.
constexpr int kWidestText = 40;

// A name's length counting wide (East Asian) characters twice: how long it
// looks without measuring it.
int LooksLong(const QString &text) {
    int length = int(text.size());
    for (const QChar c : text)
        length += c.unicode() >= 0x1100 ? 1 : 0;
    return length;
}

} // namespace

FolderMenu::FolderMenu(QWidget *parent) : QMenu(parent), model_(new FolderMenuModel(this)) {
    InstallFolderMenuAccessibility();
    connect(model_, &QAbstractItemModel::modelReset, this, &FolderMenu::modelReset);
}

FolderMenu::~FolderMenu() = default;

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

// Layout

FolderMenu::RowKind FolderMenu::kindOfItem(int index) const {
    if (index < 0)
        return RowKind::NoMatches;
    const int folderItems = model_->rowCount();
    if (index < folderItems) {
        const FolderEntry *entry = model_->entry(index);
        if (entry == nullptr)
            return RowKind::StandIn;
        if (entry->separator)
            return RowKind::Separator;
        return entry->submenu ? RowKind::Folder : RowKind::Item;
    }
    const QAction *action = own_[std::size_t(index - folderItems)];
    if (action->isSeparator())
        return RowKind::Separator;
    return action->menu() != nullptr ? RowKind::Command : RowKind::Item;
}

bool FolderMenu::isSelectable(int row) const {
    const RowKind kind = kindOfRow(row);
    return kind == RowKind::Item || kind == RowKind::Folder || kind == RowKind::Command;
}

bool FolderMenu::leadsFurther(int row) const {
    const RowKind kind = kindOfRow(row);
    return kind == RowKind::Folder || kind == RowKind::Command;
}

int FolderMenu::rowOfItem(int index) const {
    ensureLayout();
    const auto found = std::find(rows_.begin(), rows_.end(), index);
    return found == rows_.end() ? -1 : int(found - rows_.begin());
}

QString FolderMenu::shownText(int index) const {
    switch (kindOfItem(index)) {
    case RowKind::Item:
    case RowKind::Folder:
    case RowKind::Command:
        return itemText(index + 1);
    default:
        return {};
    }
}

QIcon FolderMenu::itemIcon(int index) const {
    if (index >= 0 && index < model_->rowCount())
        return model_->icon(index);
    if (index >= model_->rowCount())
        return own_[std::size_t(index - model_->rowCount())]->icon();
    return {};
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

// The rows: every item, or what matches the filter. Separators never lead,
// end or double up, as in every menu of the desktop.
void FolderMenu::layOutRows() const {
    rows_.clear();
    if (filter_.isActive()) {
        if (model_->standIn() == FolderMenuModel::StandIn::Loading)
            rows_.push_back(0);
        rows_.insert(rows_.end(), filter_.matches().begin(), filter_.matches().end());
        if (rows_.empty())
            rows_.push_back(-1);
    } else {
        const int count = itemCount();
        rows_.reserve(std::size_t(count));
        bool afterSeparator = true;
        for (int index = 0; index < count; ++index) {
            const bool separator = kindOfItem(index) == RowKind::Separator;
            if (separator && afterSeparator)
                continue;
            rows_.push_back(index);
            afterSeparator = separator;
        }
        while (!rows_.empty() && kindOfItem(rows_.back()) == RowKind::Separator)
            rows_.pop_back();
    }
    rowTop_.resize(rows_.size() + 1);
    int top = 0;
    for (std::size_t row = 0; row < rows_.size(); ++row) {
        rowTop_[row] = top;
        top += metrics_.height[int(kindOfItem(rows_[row]))];
    }
    rowTop_.back() = top;
    rowsDirty_ = false;
}

void FolderMenu::initItemOption(QStyleOptionMenuItem *option, RowKind kind, bool selected) const {
    option->initFrom(this);
    option->palette = palette();
    option->state = QStyle::State_None;
    if (window()->isActiveWindow())
        option->state |= QStyle::State_Active;
    if (isEnabled() && kind != RowKind::StandIn && kind != RowKind::NoMatches)
        option->state |= QStyle::State_Enabled;
    else
        option->palette.setCurrentColorGroup(QPalette::Disabled);
    option->font = font();
    option->fontMetrics = fontMetrics();
    if (selected) {
        option->state |= QStyle::State_Selected;
        option->palette = highlightedPalette(option->palette);
    }
    option->menuHasCheckableItems = false;
    option->checkType = QStyleOptionMenuItem::NotCheckable;
    switch (kind) {
    case RowKind::Separator:
        option->menuItemType = QStyleOptionMenuItem::Separator;
        break;
    case RowKind::Folder:
    case RowKind::Command:
        option->menuItemType = QStyleOptionMenuItem::SubMenu;
        break;
    default:
        option->menuItemType = QStyleOptionMenuItem::Normal;
        break;
    }
    option->maxIconWidth = metrics_.iconWidth;
    option->reservedShortcutWidth = 0;
    option->menuRect = contentRect();
}

// A highlighted row's palette, its window text already the highlighted text's
// colour: some styles (Fusion) recolour the arrow of a highlighted item so and
// key their cached arrow on the palette; given one palette, the same arrow is
// found again instead of cached anew at every paint.
QPalette FolderMenu::highlightedPalette(const QPalette &palette) const {
    if (highlightedFor_ != palette.cacheKey()) {
        highlightedFor_ = palette.cacheKey();
        highlighted_ = palette;
        highlighted_.setColor(QPalette::WindowText, palette.highlightedText().color());
    }
    QPalette result = highlighted_;
    result.setCurrentColorGroup(palette.currentColorGroup());
    return result;
}

// What the style asks for: margins, the height of each kind of row and what
// an item needs beside its text. Only the longest names are measured.
void FolderMenu::measure() const {
    QStyle *style = this->style();
    QStyleOption plain;
    plain.initFrom(this);
    Metrics &m = metrics_;
    m.frame = style->pixelMetric(QStyle::PM_MenuPanelWidth, &plain, this);
    m.hMargin = style->pixelMetric(QStyle::PM_MenuHMargin, &plain, this);
    m.vMargin = style->pixelMetric(QStyle::PM_MenuVMargin, &plain, this);
    m.scroller = style->pixelMetric(QStyle::PM_MenuScrollerHeight, &plain, this);
    const int iconSize = style->pixelMetric(QStyle::PM_SmallIconSize, &plain, this);
    const bool icons = model_->showsIcons() && model_->entry(0) != nullptr;
    m.iconWidth = icons ? iconSize + 4 : 0;
    const QFontMetrics metrics = fontMetrics();
    for (int kind = 0; kind < int(RowKind::Count); ++kind) {
        QStyleOptionMenuItem option;
        initItemOption(&option, RowKind(kind), false);
        const bool separator = RowKind(kind) == RowKind::Separator;
        const bool withIcon =
            icons && (RowKind(kind) == RowKind::Item || RowKind(kind) == RowKind::Folder);
        const int textHeight = withIcon ? qMax(metrics.height(), iconSize) : metrics.height();
        const QSize wide(1000, separator ? 2 : textHeight);
        if (withIcon)
            option.icon = model_->icon(0);
        const QSize size = style->sizeFromContents(QStyle::CT_MenuItem, &option,
                                                   separator ? QSize(2, 2) : wide, this);
        m.height[kind] = size.height();
        m.textExtra[kind] =
            style->sizeFromContents(QStyle::CT_MenuItem, &option, wide, this).width() - 1000;
    }
    QStyleOptionFrame field;
    field.initFrom(this);
    m.field = style
                  ->sizeFromContents(QStyle::CT_LineEdit, &field,
                                     QSize(0, qMax(metrics.height(), iconSize) + 2), this)
                  .height();
    metricsDirty_ = false;
    m.width = 2 * (m.frame + m.hMargin) + widestItem();
    const QRect screen =
        screen_.isValid() ? screen_ : QApplication::primaryScreen()->availableGeometry();
    m.width = qMin(m.width, screen.width() / 3);
}

// The widest item, its text capped: the menu's own items and stand-ins as they
// are, the folder items by their longest-looking names.
int FolderMenu::widestItem() const {
    const QFontMetrics metrics = fontMetrics();
    const int cap = kWidestText * metrics.averageCharWidth();
    int widest = 0;
    const auto consider = [&](int index) {
        const RowKind kind = kindOfItem(index);
        if (kind == RowKind::Separator)
            return;
        const QString text = kind == RowKind::Command
                                 ? own_[std::size_t(index - model_->rowCount())]->text()
                                 : MenuItemTextFor(itemText(index + 1));
        const int width =
            metrics.boundingRect(QRect(), Qt::TextSingleLine | Qt::TextShowMnemonic, text).width();
        widest = qMax(widest, qMin(width, cap) + metrics_.textExtra[int(kind)]);
    };
    const int folderItems = model_->rowCount();
    std::vector<std::pair<int, int>> lengths; // (how long it looks, index)
    lengths.reserve(std::size_t(folderItems));
    for (int index = 0; index < folderItems; ++index) {
        if (const FolderEntry *entry = model_->entry(index))
            lengths.emplace_back(LooksLong(entry->text), index);
        else
            consider(index);
    }
    const std::size_t measured = std::min(kMeasuredNames, lengths.size());
    std::nth_element(lengths.begin(), lengths.begin() + std::ptrdiff_t(measured), lengths.end(),
                     std::greater<>());
    for (std::size_t i = 0; i < measured; ++i)
        consider(lengths[i].second);
    for (int index = folderItems; index < itemCount(); ++index)
        consider(index);
    consider(-1);
    return widest;
}

QSize FolderMenu::sizeHint() const {
    ensureLayout();
    const Metrics &m = metrics_;
    const QSize content(m.width, 2 * (m.frame + m.vMargin) + (filter_.isActive() ? m.field : 0) +
                                     rowTop_.back());
    QStyleOption option;
    option.initFrom(this);
    return style()->sizeFromContents(QStyle::CT_Menu, &option, content, this);
}

// Geometry

QRect FolderMenu::contentRect() const {
    const Metrics &m = metrics_;
    return rect().adjusted(m.frame + m.hMargin,
                           m.frame + m.vMargin + (filter_.isActive() ? m.field : 0),
                           -(m.frame + m.hMargin), -(m.frame + m.vMargin));
}

int FolderMenu::maxScroll() const {
    return qMax(0, rowTop_.back() - contentRect().height());
}

QRect FolderMenu::scrollerRect(bool up) const {
    const QRect content = contentRect();
    if (up ? scroll_ <= 0 : scroll_ >= maxScroll())
        return {};
    return up ? QRect(content.left(), content.top(), content.width(), metrics_.scroller)
              : QRect(content.left(), content.bottom() + 1 - metrics_.scroller, content.width(),
                      metrics_.scroller);
}

QRect FolderMenu::viewport() const {
    QRect view = contentRect();
    view.setTop(view.top() + scrollerRect(true).height());
    view.setBottom(view.bottom() - scrollerRect(false).height());
    return view;
}

QRect FolderMenu::rowRect(int row) const {
    const QRect content = contentRect();
    const auto at = std::size_t(row);
    return QRect(content.left(), content.top() + rowTop_[at] - scroll_, content.width(),
                 rowTop_[at + 1] - rowTop_[at]);
}

int FolderMenu::rowAt(const QPoint &pos) const {
    ensureLayout();
    if (!viewport().contains(pos))
        return -1;
    const int y = pos.y() - contentRect().top() + scroll_;
    const auto after = std::upper_bound(rowTop_.begin(), rowTop_.end(), y);
    const int row = int(after - rowTop_.begin()) - 1;
    return row >= 0 && row < rowCount() ? row : -1;
}

int FolderMenu::itemAt(const QPoint &pos) const {
    const int row = rowAt(pos);
    return row >= 0 ? rows_[std::size_t(row)] + 1 : 0;
}

QRect FolderMenu::itemGeometry(int item) const {
    const int row = rowOfItem(item - 1);
    return row >= 0 ? rowRect(row).intersected(viewport()) : QRect();
}

std::vector<int> FolderMenu::shownItems() const {
    ensureLayout();
    std::vector<int> items;
    for (const int index : rows_)
        items.push_back(index + 1);
    return items;
}

int FolderMenu::activeItem() const {
    return current_ >= 0 ? rows_[std::size_t(current_)] + 1 : 0;
}

void FolderMenu::setActiveItem(int item) {
    const int row = rowOfItem(item - 1);
    setCurrentRow(row, -1);
    if (row >= 0)
        ensureVisible(row);
}

void FolderMenu::scrollTo(int offset) {
    offset = std::clamp(offset, 0, maxScroll());
    if (offset != scroll_) {
        scroll_ = offset;
        update();
    }
}

// Shows `row` just below the upper scroll arrow.
void FolderMenu::scrollRowToTop(int row) {
    scrollTo(row <= 0 ? 0 : rowTop_[std::size_t(row)] - metrics_.scroller);
}

void FolderMenu::ensureVisible(int row) {
    ensureLayout();
    const QRect rect = rowRect(row);
    const QRect view = viewport();
    if (rect.top() < view.top()) {
        scrollRowToTop(row);
    } else if (rect.bottom() > view.bottom()) {
        const bool last = row + 1 == rowCount();
        scrollTo(rowTop_[std::size_t(row) + 1] - contentRect().height() +
                 (last ? 0 : metrics_.scroller));
    }
}

void FolderMenu::scrollByRows(int rows) {
    ensureLayout();
    const int top = rowAt(QPoint(viewport().left(), viewport().top()));
    scrollRowToTop(std::clamp(top + rows, 0, qMax(0, rowCount() - 1)));
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

// Drawing, as a menu of the toolkit draws itself, but only the rows in sight.

void FolderMenu::paintEvent(QPaintEvent *event) {
    ensureLayout();
    QStylePainter painter(this);
    QRegion emptyArea(rect());
    QStyleOptionMenuItem panel;
    panel.initFrom(this);
    panel.state = QStyle::State_None;
    panel.checkType = QStyleOptionMenuItem::NotCheckable;
    panel.maxIconWidth = 0;
    panel.reservedShortcutWidth = 0;
    painter.drawPrimitive(QStyle::PE_PanelMenu, panel);

    const QRect view = viewport();
    const QRect exposed = event->rect().intersected(view);
    if (!exposed.isEmpty() && rowCount() > 0) {
        const int first = rowAt(QPoint(view.left(), exposed.top()));
        for (int row = qMax(0, first); row < rowCount(); ++row) {
            const QRect rect = rowRect(row);
            if (rect.top() > exposed.bottom())
                break;
            emptyArea -= rect.intersected(view);
            paintRow(&painter, row, view);
        }
    }
    for (const bool up : {true, false}) {
        const QRect scroller = scrollerRect(up);
        emptyArea -= scroller;
        if (!scroller.isEmpty())
            paintScroller(&painter, up);
    }
    if (filter_.isActive()) {
        const QRect field(contentRect().left(), metrics_.frame + metrics_.vMargin,
                          contentRect().width(), metrics_.field);
        emptyArea -= field;
        paintFilterField(&painter);
    }
    if (const int frame = metrics_.frame; frame > 0) {
        QRegion border;
        border += QRect(0, 0, frame, height());
        border += QRect(width() - frame, 0, frame, height());
        border += QRect(0, 0, width(), frame);
        border += QRect(0, height() - frame, width(), frame);
        painter.setClipRegion(border);
        emptyArea -= border;
        QStyleOptionFrame option;
        option.rect = rect();
        option.palette = palette();
        option.state = QStyle::State_None;
        option.lineWidth = frame;
        option.midLineWidth = 0;
        painter.drawPrimitive(QStyle::PE_FrameMenu, option);
    }
    painter.setClipRegion(emptyArea);
    panel.menuItemType = QStyleOptionMenuItem::EmptyArea;
    panel.rect = rect();
    panel.menuRect = rect();
    painter.drawControl(QStyle::CE_MenuEmptyArea, panel);
}

void FolderMenu::paintRow(QPainter *painter, int row, const QRect &clip) const {
    const int index = rows_[std::size_t(row)];
    const RowKind kind = kindOfRow(row);
    QStyleOptionMenuItem option;
    initItemOption(&option, kind, row == current_);
    option.rect = rowRect(row);
    if (kind == RowKind::Command) {
        option.text = own_[std::size_t(index - model_->rowCount())]->text();
    } else if (kind != RowKind::Separator) {
        // Long names are shortened in the middle; the tooltip shows them whole.
        const QString text = index >= 0 ? itemText(index + 1) : NoMatchingItemsText();
        const int room = option.rect.width() - metrics_.textExtra[int(kind)];
        option.text = MenuItemTextFor(ElideKeepingExtension(text, fontMetrics(), room));
    }
    option.icon = itemIcon(index);
    painter->setClipRect(option.rect.intersected(clip));
    style()->drawControl(QStyle::CE_MenuItem, &option, painter, this);
}

void FolderMenu::paintScroller(QPainter *painter, bool up) const {
    QStyleOptionMenuItem option;
    option.initFrom(this);
    option.state = QStyle::State_Enabled;
    if (!up)
        option.state |= QStyle::State_DownArrow;
    option.checkType = QStyleOptionMenuItem::NotCheckable;
    option.maxIconWidth = 0;
    option.reservedShortcutWidth = 0;
    option.rect = scrollerRect(up);
    option.menuItemType = QStyleOptionMenuItem::Scroller;
    painter->setClipRect(option.rect);
    style()->drawControl(QStyle::CE_MenuScroller, &option, painter, this);
}

// What was typed, in a field at the top drawn as the style draws a line edit.
void FolderMenu::paintFilterField(QPainter *painter) const {
    const QRect field(contentRect().left(), metrics_.frame + metrics_.vMargin,
                      contentRect().width(), metrics_.field);
    painter->setClipRect(field);
    QStyleOptionFrame frame;
    frame.initFrom(this);
    frame.rect = field;
    frame.state |= QStyle::State_Sunken | QStyle::State_HasFocus | QStyle::State_Enabled;
    frame.lineWidth = style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &frame, this);
    frame.midLineWidth = 0;
    style()->drawPrimitive(QStyle::PE_PanelLineEdit, &frame, painter, this);
    const QRect inside =
        style()->subElementRect(QStyle::SE_LineEditContents, &frame, this).adjusted(2, 0, -2, 0);
    const int iconSize = style()->pixelMetric(QStyle::PM_SmallIconSize, &frame, this);
    const QIcon find = QIcon::fromTheme(QStringLiteral("edit-find"));
    QRect text = inside;
    if (!find.isNull()) {
        const QRect icon(inside.left(), inside.center().y() - iconSize / 2, iconSize, iconSize);
        find.paint(painter, icon);
        text.setLeft(icon.right() + 5);
    }
    const QString shown = fontMetrics().elidedText(filter_.text(), Qt::ElideLeft, text.width() - 2);
    style()->drawItemText(painter, text, Qt::AlignLeft | Qt::AlignVCenter, palette(), true, shown,
                          QPalette::Text);
    // The caret after the text: the keys still go to the field.
    const int caret = text.left() + fontMetrics().horizontalAdvance(shown) + 1;
    painter->fillRect(
        QRect(caret, text.center().y() - fontMetrics().height() / 2, 1, fontMetrics().height()),
        palette().color(QPalette::Text));
}
