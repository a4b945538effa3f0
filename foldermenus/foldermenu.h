// A folder's menu. It looks and behaves as the desktop's own menus do (the
// style draws it with its menu primitives, metrics and timings), but it lays
// out, paints and looks up icons only for the rows on screen, so that a folder
// of any size opens at once; typing narrows it to the matching items.
//
// To the desktop and its style it is a QMenu, but its folder items are rows
// of its model, not actions. Its own items (a root menu's separator and the
// items that lead to the command menus) are ordinary actions, shown below the
// folder items. Items are numbered from 1: the folder items, then its own.
#pragma once

#include "core/types.h"
#include "foldermenus/menufilter.h"

#include <QBasicTimer>
#include <QMenu>
#include <QPointer>

#include <cstdint>
#include <functional>
#include <vector>

class FolderMenuModel;
class QMimeData;
class QStyleOptionMenuItem;

class FolderMenu final : public QMenu {
    Q_OBJECT
public:
    explicit FolderMenu(QWidget *parent = nullptr);
    ~FolderMenu() override;

    FolderMenuModel *model() const { return model_; }
    int itemCount() const;
    // What item `item` shows, whole (before any shortening).
    QString itemText(int item) const;

    // The menu that folder items lead to (the next depth's); null outside a click.
    void setSubMenu(FolderMenu *menu);
    // While this menu is open as a submenu: the menu it came from.
    FolderMenu *parentMenu() const { return parentMenu_; }

    // The highlighted item, 0 for none.
    int activeItem() const;
    // Highlights `item` and scrolls it into view, opening nothing.
    void setActiveItem(int item);
    // Highlights the first item that can be chosen, as a menu opened from the
    // keyboard does.
    void selectFirstRow();
    // Where an item stands now (empty while it is scrolled away or filtered out).
    QRect itemGeometry(int item) const;
    // The items shown now, in order: all of them, or those matching the filter.
    std::vector<int> shownItems() const;
    QString filterText() const { return filter_.text(); }

    // Opens the menu with its top-left corner at the global point `where`.
    void openAt(const QPoint &where);
    // Closes this menu, the menus it opened and the menus it came from.
    void closeAll();

    QSize sizeHint() const override;

    // What a drop of files on folder item `item` does; its status says
    // whether the drop was taken. Without one the menu takes no drops.
    using DropHandler = std::function<OSErr(int item, const QMimeData *data)>;
    void setDropHandler(DropHandler handler);
    // Whether a drag the menu takes is over it now.
    bool hasDrag() const { return hasDrag_; }

Q_SIGNALS:
    // A folder item was chosen (released on, or Return or Space): a file, or a
    // folder itself. The menus close right after.
    void itemChosen(int item);
    // The right button, the Menu key or Shift+F10 asked for an item's context
    // menu. While nothing listens, the right button chooses as the left does.
    void contextMenuRequested(int item, const QPoint &globalPos);
    // An item pressed in this menu was dragged past the drag distance: the
    // place where a drag out of the menu would begin.
    void dragStartRequested(int item);

protected:
    // The toolkit's events (foldermenu.cpp): tooltips, showing and hiding, own
    // items and style changes
    bool event(QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void actionEvent(QActionEvent *event) override;
    void changeEvent(QEvent *event) override;
    // drawing (foldermenupaint.cpp)
    void paintEvent(QPaintEvent *event) override;
    // The user's hands (foldermenuinput.cpp): keys, buttons, the pointer moving
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    // the wheel, and the pointer coming and going
    void wheelEvent(QWheelEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    // the submenu delay, the sloppy time-out and the scroll arrows
    void timerEvent(QTimerEvent *event) override;
    // Files dragged over folder items (foldermenudrops.cpp)
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    friend class FolderMenuAccessible;
    friend class FolderMenuItemAccessible;

    enum class RowKind : std::uint8_t {
        Item,      // a file, or anything chosen as it is
        Folder,    // a folder item that leads to the next depth's menu
        Command,   // one of the menu's own items, leading to a command menu
        Separator, // a line
        StandIn,   // "(empty)" or "Loading…"
        NoMatches, // nothing matches what was typed
        Count
    };
    struct Metrics {
        int frame = 0;
        int hMargin = 0;
        int vMargin = 0;
        int scroller = 0;
        int iconWidth = 0; // the room the style keeps for icons
        int field = 0;     // the filter field's height, while it shows
        int height[int(RowKind::Count)] = {};
        int textExtra[int(RowKind::Count)] = {}; // an item's width beyond its text
        int width = 0;
    };

    // Layout (foldermenu.cpp): rows are the items shown, in order; a row
    // holds its item's index (from 0), or -1 for the no-match row.
    RowKind kindOfItem(int index) const;
    RowKind kindOfRow(int row) const { return kindOfItem(rows_[std::size_t(row)]); }
    bool isSelectable(int row) const;
    bool leadsFurther(int row) const;
    int rowCount() const { return int(rows_.size()); }
    int rowOfItem(int index) const;
    void invalidate(bool metricsToo);
    void ensureLayout() const;
    void layOutRows() const;
    void measure() const;
    int widestItem() const;
    void initItemOption(QStyleOptionMenuItem *option, RowKind kind, bool selected) const;
    QPalette highlightedPalette(const QPalette &palette) const;
    QString shownText(int index) const;
    QIcon itemIcon(int index) const;
    QRect contentRect() const;
    QRect viewport() const;
    QRect rowRect(int row) const;
    QRect scrollerRect(bool up) const;
    int rowAt(const QPoint &pos) const;
    int maxScroll() const;
    void scrollTo(int offset);
    void scrollRowToTop(int row);
    void ensureVisible(int row);
    void scrollByRows(int rows);
    void place(QPoint where, const QRect &openerRow);
    void fitOnScreen();
    void paintRow(QPainter *painter, int row, const QRect &clip) const;
    void paintFilterField(QPainter *painter) const;
    void paintScroller(QPainter *painter, bool up) const;
    void modelReset();

    // Behaviour (foldermenuinput.cpp).
    // Makes `row` the highlighted one (-1: none). With a delay of 0 or more,
    // the submenu it leads to opens after it; with -1 an open submenu closes.
    void setCurrentRow(int row, int popupDelay);
    int nextSelectableRow(int from, int step, bool wrap) const;
    void moveSelection(int step);
    void pageSelection(int pages);
    void openChild(bool selectFirst);
    void closeChild();
    void childClosed(QWidget *child);
    void childEntered();
    bool childIsOpen() const;
    void sloppyTimeout();
    void choose(int row, Qt::MouseButton button);
    FolderMenu *olderMenuAt(const QPoint &global) const;
    bool passToOlderMenu(QMouseEvent *event);
    bool pointerHasMoved(const QPoint &global) const;
    void typeIntoFilter(const QString &text);
    void backspaceFilter();
    void clearFilter();
    void filterChanged();
    // The row a drag at `pos` would drop on, -1 for none; highlighted as it is.
    int dropRowAt(const QPoint &pos, Qt::DropActions possible) const;
    void setDropRow(int row);

    FolderMenuModel *model_;
    QPointer<FolderMenu> subMenu_;
    QPointer<FolderMenu> parentMenu_;
    QPointer<QWidget> child_; // the open submenu or command menu
    int childItem_ = -1;      // the item (index) that opened it
    int delayItem_ = -1;      // the item whose submenu opens when the delay ends
    std::vector<QAction *> own_;
    MenuFilter filter_;

    mutable std::vector<int> rows_;
    mutable std::vector<int> rowTop_; // rows_.size() + 1 tops, in content coordinates
    mutable Metrics metrics_;
    mutable QPalette highlighted_;
    mutable qint64 highlightedFor_ = 0;
    mutable bool rowsDirty_ = true;
    mutable bool metricsDirty_ = true;
    int scroll_ = 0;
    int current_ = -1;
    QRect screen_; // where the menu opens

    // The pointer since the menu opened.
    QPoint openedAt_;
    QPoint pointer_; // where the last mouse event saw it
    int motions_ = 0;
    bool hasHadMouse_ = false;
    int pressRow_ = -1;
    QPoint pressedAt_;
    bool dragRequested_ = false;
    int scrollDirection_ = 0;
    DropHandler dropHandler_;
    int dropRow_ = -1; // the folder item a drag is over
    bool hasDrag_ = false;
    bool dragHasLocalFiles_ = false; // only local files, worked out as the drag entered

    class FolderMenuAccessible *accessible_ = nullptr; // while a screen reader looks

    QBasicTimer delayTimer_;
    QBasicTimer sloppyTimer_;
    QBasicTimer scrollTimer_;
    bool sloppy_ = false; // a submenu opened by the pointer is open
};

// The path stored on folder item `item` of `menu`; empty for the stand-in
// item and for the menu's own items.
QByteArray FolderItemPath(const FolderMenu *menu, int item);

// Sends `event` on to `menu`, at the same place on screen, as if the pointer
// had been over it.
void PassMouseEvent(FolderMenu *menu, const QMouseEvent &event);

// Alt, AltGr, Meta and Super: held while choosing, they change nothing in the
// menus of a click, and pressed alone they are swallowed there.
bool IsKeyHeldWhileChoosing(int key);
