#include "foldermenus/itemcontextmenu.h"

#include "foldermenus/foldermenu.h"
#include "foldermenus/foldermenumodel.h"
#include "foldermenus/menutext.h"
#include "platform/launcher.h"
#include "platform/service.h"

#include <QCoreApplication>
#include <QFile>
#include <QMenu>
#include <QMimeDatabase>

namespace {

QString Tr(const char *text) {
    return QCoreApplication::translate("ItemMenu", text);
}

// The applications that say they open the item's type, the default first,
// then the chooser of every other one. The type is the one the item's icon
// shows, told by its name: a file on a mount that stopped answering must not
// hold the menu up.
void FillOpenWith(QMenu *menu, const MenuItemFiles &files,
                  const std::function<void(const ItemCommandChoice &)> &chosen) {
    platform::Launcher &launcher = platform::service<platform::Launcher>();
    const QString type = files.isFolder ? QStringLiteral("inode/directory")
                                        : QMimeDatabase()
                                              .mimeTypeForFile(QFile::decodeName(files.path),
                                                               QMimeDatabase::MatchExtension)
                                              .name();
    const QList<platform::ApplicationInfo> applications =
        type.isEmpty() ? QList<platform::ApplicationInfo>()
                       : launcher.applicationsFor(type, nullptr);
    for (const platform::ApplicationInfo &application : applications) {
        QAction *action = menu->addAction(QIcon::fromTheme(application.iconName),
                                          MenuItemTextFor(application.name));
        QObject::connect(action, &QAction::triggered, menu, [chosen, id = application.id] {
            chosen({ItemCommand::OpenWith, id});
        });
    }
    if (!applications.isEmpty())
        menu->addSeparator();
    QObject::connect(menu->addAction(Tr("&Other Application…")), &QAction::triggered, menu,
                     [chosen] {
                         chosen({ItemCommand::OpenWithOther, {}});
                     });
}

} // namespace

MenuItemFiles FolderItemFiles(const FolderMenu *menu, int item) {
    const FolderEntry *entry = menu != nullptr ? menu->model()->entry(item - 1) : nullptr;
    if (entry == nullptr || entry->separator)
        return {};
    return {entry->path, entry->link.isEmpty() ? entry->path : entry->link,
            entry->kind == FolderEntry::Kind::Folder || entry->kind == FolderEntry::Kind::Package};
}

QMenu *NewItemContextMenu(const MenuItemFiles &files,
                          std::function<void(const ItemCommandChoice &)> chosen) {
    auto *menu = new QMenu;
    menu->setObjectName(QStringLiteral("itemContextMenu"));
    QObject::connect(menu, &QMenu::aboutToHide, menu, &QObject::deleteLater);
    struct Entry {
        ItemCommand command;
        const char *text;
        const char *icon;
        bool separatorBefore;
    };
    static constexpr Entry kEntries[] = {
        {ItemCommand::Open, QT_TRANSLATE_NOOP("ItemMenu", "&Open"), "document-open", false},
        {ItemCommand::OpenWith, QT_TRANSLATE_NOOP("ItemMenu", "Open &With"), nullptr, false},
        {ItemCommand::OpenInTerminal, QT_TRANSLATE_NOOP("ItemMenu", "Open in &Terminal"),
         "utilities-terminal", false},
        {ItemCommand::ShowInFolder, QT_TRANSLATE_NOOP("ItemMenu", "Show in &Folder"), "folder-open",
         true},
        {ItemCommand::Properties, QT_TRANSLATE_NOOP("ItemMenu", "P&roperties"),
         "document-properties", false},
        {ItemCommand::CopyPath, QT_TRANSLATE_NOOP("ItemMenu", "&Copy Path"), "edit-copy", true},
        {ItemCommand::MoveToTrash, QT_TRANSLATE_NOOP("ItemMenu", "Move to Tr&ash"), "user-trash",
         true},
        {ItemCommand::RemoveFromMenu, QT_TRANSLATE_NOOP("ItemMenu", "Remove from &Menu"),
         "list-remove", false},
    };
    for (const Entry &entry : kEntries) {
        if (!IsItemCommandOffered(entry.command, files))
            continue;
        if (entry.separatorBefore && !menu->actions().isEmpty() &&
            !menu->actions().last()->isSeparator())
            menu->addSeparator();
        if (entry.command == ItemCommand::OpenWith) {
            QMenu *with = menu->addMenu(Tr(entry.text));
            QObject::connect(
                with, &QMenu::aboutToShow, with,
                [with, files, chosen] { FillOpenWith(with, files, chosen); },
                Qt::SingleShotConnection);
            continue;
        }
        QAction *action =
            menu->addAction(QIcon::fromTheme(QLatin1String(entry.icon)), Tr(entry.text));
        QObject::connect(action, &QAction::triggered, menu, [chosen, command = entry.command] {
            chosen({command, {}});
        });
    }
    return menu;
}
