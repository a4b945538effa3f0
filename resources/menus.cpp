#include "resources/menus.h"

#include <QCoreApplication>
#include <QMenu>
#include <QPointer>

namespace {

constexpr const char *kMenuIDProperty = "kestrelMenuID";
constexpr const char *kContext = "Menus";

QString Text(const char *source) {
    return QCoreApplication::translate(kContext, source);
}

QPointer<QMenu> applicationCommandsMenu;
QPointer<QMenu> folderCommandsMenu;

void UnloadCommandMenus() {
    delete applicationCommandsMenu;
    delete folderCommandsMenu;
}

// A null text stands for a separator, which counts as an item.
QMenu *NewCommandMenu(MenuID id, const QString &title, std::initializer_list<const char *> items) {
    auto *menu = new QMenu(title);
    SetMenuID(menu, id);
    for (const char *item : items) {
        if (item == nullptr)
            menu->addSeparator();
        else
            menu->addAction(Text(item));
    }
    return menu;
}

} // namespace

void SetMenuID(QMenu *menu, MenuID id) {
    menu->setProperty(kMenuIDProperty, int(id));
}

MenuID GetMenuID(const QMenu *menu) {
    return menu == nullptr ? 0 : MenuID(menu->property(kMenuIDProperty).toInt());
}

void LoadCommandMenus() {
    if (applicationCommandsMenu != nullptr)
        return;
    // The order is the item numbering: Quit stays the last item. Each item's
    // letter chooses it from the keyboard.
    applicationCommandsMenu =
        NewCommandMenu(kApplicationCommandsMenuID, Text("Kestrel Menu"),
                       {QT_TRANSLATE_NOOP("Menus", "&About Kestrel Menu"),
                        QT_TRANSLATE_NOOP("Menus", "&Preferences…"), nullptr,
                        QT_TRANSLATE_NOOP("Menus", "&New Title for a Folder…"),
                        QT_TRANSLATE_NOOP("Menus", "&Remove This Title"), nullptr,
                        QT_TRANSLATE_NOOP("Menus", "&Quit Kestrel Menu")});
    folderCommandsMenu = NewCommandMenu(kFolderCommandsMenuID, Text("This Folder"),
                                        {QT_TRANSLATE_NOOP("Menus", "&Add an Item…"),
                                         QT_TRANSLATE_NOOP("Menus", "&Open This Folder"),
                                         QT_TRANSLATE_NOOP("Menus", "&Choose Another Folder…")});
    qAddPostRoutine(UnloadCommandMenus);
}

QMenu *ApplicationCommandsMenu() {
    return applicationCommandsMenu;
}
QMenu *FolderCommandsMenu() {
    return folderCommandsMenu;
}

void LoadMenuTemplate161(QMenu *menu) {
    LoadCommandMenus();
    SetMenuID(menu, kRootMenuTemplateID);
    menu->addSeparator();
    menu->addAction(Text("This Folder"))->setMenu(folderCommandsMenu);
    menu->addAction(Text("Kestrel Menu"))->setMenu(applicationCommandsMenu);
}

QString EmptyFolderText() {
    return Text("(empty)");
}

QString LoadingFolderText() {
    return Text("Loading…");
}

QString NoMatchingItemsText() {
    return Text("No matching items");
}
