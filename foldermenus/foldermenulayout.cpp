// Laying out a folder menu: which rows it shows, how tall and wide they are,
// and where they stand as it scrolls. Nothing here depends on the folder's
// size but the rows' tops and the few names measured for the width.
#include "foldermenus/foldermenu.h"

#include "foldermenus/foldermenumodel.h"
#include "foldermenus/menutext.h"

#include <QApplication>
#include <QScreen>
#include <QStyleOptionMenuItem>

#include <algorithm>

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
    // Rows stand in item order (the no-match row alone), so a search halves.
    const auto found = std::lower_bound(rows_.begin(), rows_.end(), index);
    return found == rows_.end() || *found != index ? -1 : int(found - rows_.begin());
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
