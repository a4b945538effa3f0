// What the menus of a click do beyond the toolkit's own menu handling, for as
// long as the click's menu is up:
// - releasing the mouse on a folder item chooses the folder itself (the
//   toolkit would only open its submenu);
// - Space chooses the highlighted item, a folder item included; Return and
//   the right arrow open a folder item's submenu;
// - typing moves to the next item whose name starts with what was typed; the
//   same letter again steps on through the items that start with it;
// - a press that was dragged and let go outside every menu closes them all
//   with nothing chosen (a plain click on the title leaves the menu open).
// The menus of a click are the depth menus (256-265) and the command menus
// (224, 225).
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QString>

class QAction;
class QKeyEvent;
class QMenu;
class QMouseEvent;

class MenuChoiceWatch final : public QObject {
public:
    // Starts watching; the pointer's place now is where a drag would start.
    MenuChoiceWatch();
    ~MenuChoiceWatch() override;
    MenuChoiceWatch(const MenuChoiceWatch &) = delete;
    MenuChoiceWatch &operator=(const MenuChoiceWatch &) = delete;

    // The item chosen by the means above; null when the toolkit's own
    // handling chose, or nothing was chosen.
    QAction *MenuChoice() const { return choice_; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool mouseReleased(QMouseEvent *event);
    bool keyPressed(QMenu *menu, QKeyEvent *event);
    void typeAhead(QMenu *menu, const QString &text);
    void choose(QAction *item);

    QPoint pressedAt_;
    QPointer<QAction> choice_;
    // What has been typed into which menu, and when last.
    QString typed_;
    QPointer<QMenu> typedIn_;
    QElapsedTimer sinceTyped_;
};

// Whether `menu` is one of the menus of a click (the depth and command menus).
bool IsClickMenu(const QMenu *menu);

// The item of `menu` that typing `typed` moves to: the first item at or after
// `from` (after it when `after`), wrapping round, whose shown name starts with
// `typed`, case and accents as written aside. Null when none does.
QAction *TypeAheadItem(const QMenu *menu, const QString &typed, const QAction *from, bool after);
