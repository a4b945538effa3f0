#include "foldermenus/menutracking.h"

#include "foldermenus/buildsubmenu.h"
#include "foldermenus/foldercache.h"
#include "foldermenus/foldermenu.h"
#include "foldermenus/itemdrag.h"
#include "titles/readymenu.h"
#include "titles/titledrops.h"

#include <QAction>
#include <QApplication>
#include <QEventLoop>
#include <QFile>
#include <QKeyEvent>
#include <QLoggingCategory>
#include <QMouseEvent>
#include <QTimer>

#include <algorithm>
#include <vector>

Q_LOGGING_CATEGORY(lcMenuChoice, "kestrel.menus", QtWarningMsg)

namespace {

// The newest open folder menu of the click under a global point.
FolderMenu *FolderMenuAt(QPoint global) {
    for (int depth = kDepthMenuCount - 1; depth >= 0; --depth) {
        FolderMenu *menu = subMenuRef[depth];
        if (menu != nullptr && menu->isVisible() && menu->geometry().contains(global))
            return menu;
    }
    return nullptr;
}

class CommandMenuWatch final : public QObject {
public:
    CommandMenuWatch(FolderMenu *root, QPoint where) : root_(root), openedAt_(where) {
        for (QMenu *menu : {ApplicationCommandsMenu(), FolderCommandsMenu()}) {
            if (menu != nullptr)
                menu->installEventFilter(this);
        }
    }
    ~CommandMenuWatch() override {
        for (QMenu *menu : {ApplicationCommandsMenu(), FolderCommandsMenu()}) {
            if (menu != nullptr)
                menu->removeEventFilter(this);
        }
    }
    CommandMenuWatch(const CommandMenuWatch &) = delete;
    CommandMenuWatch &operator=(const CommandMenuWatch &) = delete;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override {
        auto *menu = static_cast<QMenu *>(watched);
        switch (event->type()) {
        case QEvent::Show:
            qCDebug(lcMenuChoice, "menu %d shown: %d items", int(GetMenuID(menu)),
                    int(menu->actions().size()));
            return false;
        case QEvent::KeyPress:
            return keyPressed(menu, static_cast<QKeyEvent *>(event)->key());
        case QEvent::MouseMove:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
            return mouse(menu, static_cast<QMouseEvent *>(event));
        default:
            return false;
        }
    }

private:
    static bool keyPressed(QMenu *menu, int key) {
        if (key == Qt::Key_Left)
            menu->close(); // back to the folder menu it came from
        return key == Qt::Key_Left || IsKeyHeldWhileChoosing(key);
    }

    bool mouse(QMenu *menu, QMouseEvent *event) {
        const QPoint global = event->globalPosition().toPoint();
        if (menu->geometry().contains(global))
            return false;
        if (FolderMenu *under = FolderMenuAt(global)) {
            PassMouseEvent(under, *event);
            return true;
        }
        if (event->type() == QEvent::MouseButtonRelease &&
            (global - openedAt_).manhattanLength() >= QApplication::startDragDistance()) {
            qCDebug(lcMenuChoice, "released outside the menus");
            root_->closeAll();
            return true;
        }
        return false;
    }

    FolderMenu *root_;
    QPoint openedAt_;
};

// Files dropped on a folder item become links in its folder, as on a title;
// the titles that show that folder list them at their next opening.
OSErr DropOnFolderItem(const FSSpec &folder, const QMimeData *data) {
    const OSErr err = LinkDroppedItems(folder, DragFromMimeData(data), [&folder] {
        for (ReadyMenu *title = firstReadyMenu; title != nullptr; title = title->next) {
            if (title->menuSpec->folder == folder)
                DestroyFolderCachedMenu(title);
        }
    });
    if (err != noErr)
        qCWarning(lcMenuChoice, "drop on %s stopped with status %d",
                  qPrintable(QFile::decodeName(folder.path)), int(err));
    else
        qCDebug(lcMenuChoice, "dropped into %s", qPrintable(QFile::decodeName(folder.path)));
    return err;
}

// What a folder menu of the click does besides choosing: an item's context
// menu (an entry taken is the click's choice), a drag out of the menus, and
// files dropped on a folder item.
std::vector<QMetaObject::Connection> ConnectItemActions(FolderMenu *rootMenu, FolderMenu *menu,
                                                        MenuSelection *selection,
                                                        QPointer<QMenu> *contextMenu) {
    std::vector<QMetaObject::Connection> connections;
    connections.push_back(
        QObject::connect(menu, &FolderMenu::contextMenuRequested, [=](int item, QPoint at) {
            const MenuItemFiles files = FolderItemFiles(menu, item);
            if (files.path.isEmpty())
                return;
            *contextMenu = NewItemContextMenu(files, [=](const ItemCommandChoice &choice) {
                *selection = {GetMenuID(menu), std::uint16_t(item), choice, files};
                rootMenu->closeAll();
            });
            qCDebug(lcMenuChoice, "context menu of %s: %d entries",
                    qPrintable(menu->itemText(item)), int((*contextMenu)->actions().size()));
            (*contextMenu)->popup(at);
        }));
    connections.push_back(
        QObject::connect(menu, &FolderMenu::dragStartRequested, [rootMenu, menu](int item) {
            // Whatever became of the drag, the menus have done their part.
            if (!FolderItemPath(menu, item).isEmpty()) {
                DragItemOut(menu, item);
                rootMenu->closeAll();
            }
        }));
    menu->setDropHandler([rootMenu, menu](int item, const QMimeData *data) {
        const OSErr err = DropOnFolderItem(FSSpec{FolderItemPath(menu, item)}, data);
        // Not from inside the drop: the menu still answers the drag source.
        QMetaObject::invokeMethod(rootMenu, &FolderMenu::closeAll, Qt::QueuedConnection);
        return err;
    });
    return connections;
}

// Menus that a drag resting on their title opened have no pointer of their
// own while it lasts: they close once it has been over neither them nor a
// title for two looks.
class DragOpenedMenusWatch final {
public:
    explicit DragOpenedMenusWatch(FolderMenu *rootMenu) {
        QObject::connect(&timer_, &QTimer::timeout, [this, rootMenu] {
            const bool over =
                DragIsOverATitle() || std::any_of(std::begin(subMenuRef), std::end(subMenuRef),
                                                  [](const QPointer<FolderMenu> &menu) {
                                                      return menu != nullptr && menu->hasDrag();
                                                  });
            looksWithoutDrag_ = over ? 0 : looksWithoutDrag_ + 1;
            if (looksWithoutDrag_ >= 2)
                rootMenu->closeAll();
        });
        if (menuOpenedByDrag)
            timer_.start(250);
    }

private:
    QTimer timer_;
    int looksWithoutDrag_ = 0;
};

} // namespace

MenuSelection PopUpFolderMenu(FolderMenu *rootMenu, QPoint where, bool forKeyboard) {
    MenuSelection selection;
    std::vector<QMetaObject::Connection> connections;
    QPointer<QMenu> contextMenu;
    for (int depth = 0; depth < kDepthMenuCount; ++depth) {
        FolderMenu *menu = subMenuRef[depth];
        if (menu == nullptr)
            continue;
        connections.push_back(QObject::connect(menu, &FolderMenu::itemChosen, [&, menu](int item) {
            qCDebug(lcMenuChoice, "item chosen in the menu: %s", qPrintable(menu->itemText(item)));
            selection = {GetMenuID(menu), std::uint16_t(item), std::nullopt, {}};
        }));
        for (const QMetaObject::Connection &connection :
             ConnectItemActions(rootMenu, menu, &selection, &contextMenu))
            connections.push_back(connection);
    }
    for (QMenu *commands : {ApplicationCommandsMenu(), FolderCommandsMenu()}) {
        if (commands == nullptr)
            continue;
        connections.push_back(
            QObject::connect(commands, &QMenu::triggered, [&, commands](QAction *action) {
                selection = {GetMenuID(commands),
                             std::uint16_t(commands->actions().indexOf(action) + 1),
                             std::nullopt,
                             {}};
                rootMenu->closeAll();
            }));
    }
    const CommandMenuWatch watch(rootMenu, QCursor::pos());
    const DragOpenedMenusWatch dragWatch(rootMenu);
    QEventLoop loop;
    connections.push_back(
        QObject::connect(rootMenu, &QMenu::aboutToHide, &loop, &QEventLoop::quit));
    rootMenu->openAt(where);
    if (forKeyboard)
        rootMenu->selectFirstRow();
    if (rootMenu->isVisible())
        loop.exec();
    for (const QMetaObject::Connection &connection : connections)
        QObject::disconnect(connection);
    for (FolderMenu *menu : subMenuRef) {
        if (menu != nullptr)
            menu->setDropHandler(nullptr);
    }
    // A context menu still up (the menus were closed from elsewhere) goes too.
    if (contextMenu != nullptr)
        contextMenu->close();
    return selection;
}
