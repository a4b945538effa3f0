#include "foldermenus/menuchoice.h"

#include "foldermenus/buildsubmenu.h"
#include "foldermenus/folderentries.h"
#include "resources/menus.h"

#include <QAction>
#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QLoggingCategory>
#include <QMenu>
#include <QMouseEvent>

Q_LOGGING_CATEGORY(lcMenuChoice, "kestrel.menus", QtWarningMsg)

namespace {

// Letters typed further apart than this start a new search.
constexpr qint64 kTypeAheadPauseMs = 1000;

// A folder item: it leads to a submenu and names a folder on disk.
bool IsFolderItem(const QAction *item) {
    return item != nullptr && item->menu() != nullptr && !FolderItemPath(item).isEmpty();
}

bool IsChoosable(const QAction *item) {
    return item != nullptr && item->isEnabled() && item->isVisible() && !item->isSeparator();
}

// An item's name as shown: "&&" stands for "&", a lone "&" marks a mnemonic.
QString ShownText(const QAction *item) {
    const QString text = item->text();
    QString shown;
    shown.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'&') {
            if (i + 1 < text.size() && text[i + 1] == u'&')
                shown += text[++i];
            continue;
        }
        shown += text[i];
    }
    return shown;
}

// The visible menu of a click under the global point. The newest menu comes
// first: a submenu pushed back by the screen's edge may overlap the menu it
// came from.
QMenu *ClickMenuAt(QPoint global) {
    const auto under = [global](const QWidget *widget) {
        const auto *menu = qobject_cast<const QMenu *>(widget);
        return menu != nullptr && menu->isVisible() && IsClickMenu(menu) &&
               menu->geometry().contains(global);
    };
    if (QWidget *newest = QApplication::activePopupWidget(); under(newest))
        return static_cast<QMenu *>(newest);
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (under(window))
            return static_cast<QMenu *>(window);
    }
    return nullptr;
}

void CloseEveryMenu() {
    // Each close takes one menu off the stack of open menus, the newest first.
    for (int guard = 0; guard < 64; ++guard) {
        QWidget *popup = QApplication::activePopupWidget();
        if (popup == nullptr)
            return;
        popup->close();
    }
}

} // namespace

bool IsClickMenu(const QMenu *menu) {
    const MenuID id = GetMenuID(menu);
    return id == kApplicationCommandsMenuID || id == kFolderCommandsMenuID ||
           (id >= kFirstDepthMenuID && id < kFirstDepthMenuID + kDepthMenuCount);
}

QAction *TypeAheadItem(const QMenu *menu, const QString &typed, const QAction *from, bool after) {
    const QList<QAction *> items = menu->actions();
    const qsizetype count = items.size();
    if (count == 0 || typed.isEmpty())
        return nullptr;
    const QString key = FolderSortKey(typed);
    const qsizetype index = items.indexOf(from);
    const qsizetype start = index < 0 ? 0 : index + (after ? 1 : 0);
    for (qsizetype step = 0; step < count; ++step) {
        QAction *item = items[(start + step) % count];
        if (IsChoosable(item) && FolderSortKey(ShownText(item)).startsWith(key))
            return item;
    }
    return nullptr;
}

MenuChoiceWatch::MenuChoiceWatch() : pressedAt_(QCursor::pos()) {
    qApp->installEventFilter(this);
}

MenuChoiceWatch::~MenuChoiceWatch() {
    qApp->removeEventFilter(this);
}

bool MenuChoiceWatch::eventFilter(QObject *watched, QEvent *event) {
    const QEvent::Type type = event->type();
    if (type != QEvent::MouseButtonRelease && type != QEvent::KeyPress && type != QEvent::Show)
        return false;
    auto *menu = qobject_cast<QMenu *>(watched);
    if (menu == nullptr || !IsClickMenu(menu))
        return false;
    switch (type) {
    case QEvent::Show:
        qCDebug(lcMenuChoice, "menu %d shown: %d items", int(GetMenuID(menu)),
                int(menu->actions().size()));
        return false;
    case QEvent::MouseButtonRelease:
        return mouseReleased(static_cast<QMouseEvent *>(event));
    case QEvent::KeyPress:
        return keyPressed(menu, static_cast<QKeyEvent *>(event));
    default:
        return false;
    }
}

bool MenuChoiceWatch::mouseReleased(QMouseEvent *event) {
    // The release goes to the newest menu wherever it happens; what counts is
    // the menu under the pointer.
    const QPoint global = event->globalPosition().toPoint();
    QMenu *under = ClickMenuAt(global);
    if (under == nullptr) {
        if ((global - pressedAt_).manhattanLength() < QApplication::startDragDistance())
            return false; // the end of the click that opened the menu
        qCDebug(lcMenuChoice, "released outside the menus");
        CloseEveryMenu();
        return true;
    }
    QAction *item = under->actionAt(under->mapFromGlobal(global));
    if (!IsFolderItem(item) || !IsChoosable(item))
        return false;
    choose(item);
    return true;
}

bool MenuChoiceWatch::keyPressed(QMenu *menu, QKeyEvent *event) {
    switch (event->key()) {
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
        // Held while choosing, these keys change nothing; on their own they
        // would close the menu as if a menu bar were waiting for the keyboard.
        return true;
    default:
        break;
    }
    if (event->key() == Qt::Key_Space) {
        // Space never searches: it chooses the highlighted item, a folder item
        // included. Items that only lead to a command menu have nothing to choose.
        QAction *item = menu->activeAction();
        if (IsChoosable(item) && (item->menu() == nullptr || IsFolderItem(item)))
            choose(item);
        return true;
    }
    const QString text = event->text();
    const Qt::KeyboardModifiers held =
        event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (text.size() != 1 || !text[0].isPrint() || held != Qt::NoModifier)
        return false;
    typeAhead(menu, text);
    return true;
}

void MenuChoiceWatch::typeAhead(QMenu *menu, const QString &text) {
    if (menu != typedIn_ || !sinceTyped_.isValid() || sinceTyped_.elapsed() > kTypeAheadPauseMs)
        typed_.clear();
    typedIn_ = menu;
    sinceTyped_.start();
    typed_ += text;

    // One letter, or the same letter again: on to the next item starting with
    // it. More letters: the current item stays while it still matches.
    const bool repeated = typed_.count(typed_.front()) == typed_.size();
    const QString search = repeated ? typed_.left(1) : typed_;
    QAction *next = TypeAheadItem(menu, search, menu->activeAction(), repeated);
    if (next == nullptr)
        return;
    // Stepped to as the arrow keys would: highlighting an item directly would
    // open its submenu and send the keys there.
    const qsizetype steps = menu->actions().size() + 1;
    for (qsizetype step = 0; step < steps && menu->activeAction() != next; ++step) {
        QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
        QCoreApplication::sendEvent(menu, &down);
    }
}

void MenuChoiceWatch::choose(QAction *item) {
    qCDebug(lcMenuChoice, "item chosen in the menu: %s", qPrintable(ShownText(item)));
    choice_ = item;
    CloseEveryMenu();
}
