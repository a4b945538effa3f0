// Drawing a folder menu, as a menu of the toolkit draws itself, but only the
// rows in sight.
#include "foldermenus/foldermenu.h"

#include "foldermenus/foldermenumodel.h"
#include "foldermenus/menutext.h"
#include "resources/menus.h"

#include <QPaintEvent>
#include <QStyleOptionMenuItem>
#include <QStylePainter>

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
    // While a drag is over a folder item, that item alone is highlighted.
    initItemOption(&option, kind, dropRow_ >= 0 ? row == dropRow_ : row == current_);
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
