#include "foldermenus/buildsubmenu.h"

#include "foldermenus/folderentries.h"
#include "foldermenus/menuicons.h"
#include "resources/menus.h"

#include <QAction>
#include <QMenu>

QPointer<QMenu> subMenuRef[kDepthMenuCount];
std::uint32_t subMenuItems[kDepthMenuCount];

namespace {

constexpr const char *kHierarchicalItemsProperty = "kestrelHierarchicalItems";

// The folder items of one menu that lead further, kept with the menu so that
// the submenus of a later click can be attached without walking every item.
class HierarchicalItemList : public QObject {
public:
    using QObject::QObject;
    QList<QPointer<QAction>> items;
};

HierarchicalItemList *ItemListOf(const QMenu *menu, bool create) {
    auto *list =
        qobject_cast<QObject *>(menu->property(kHierarchicalItemsProperty).value<QObject *>());
    if (list == nullptr && create) {
        auto *mutableMenu = const_cast<QMenu *>(menu);
        list = new HierarchicalItemList(mutableMenu);
        mutableMenu->setProperty(kHierarchicalItemsProperty, QVariant::fromValue(list));
    }
    return static_cast<HierarchicalItemList *>(list);
}

bool ShowsIcons(std::int32_t depth, std::uint32_t found) {
    if (depth == 0)
        return (generalSettings.mainMenuIcons & 0xFF) != 0;
    // The limit is signed but compared unsigned: a negative limit never hides icons.
    const auto limit = std::uint32_t(std::int32_t(generalSettings.subMenuIconLimit));
    return generalSettings.subMenuIcons != 0 && found <= limit;
}

} // namespace

QString MenuItemTextFor(const QString &name) {
    QString text;
    text.reserve(name.size());
    for (const QChar c : name) {
        if (c == u'&')
            text += QLatin1String("&&");
        else if (c.unicode() < 0x20 || c.unicode() == 0x7F)
            text += QChar(QChar::ReplacementCharacter); // a tab would start a shortcut
        else
            text += c;
    }
    return text;
}

QByteArray FolderItemPath(const QAction *item) {
    return item == nullptr ? QByteArray() : item->data().toByteArray();
}

QList<QAction *> HierarchicalItems(const QMenu *menu) {
    QList<QAction *> result;
    if (const HierarchicalItemList *list = ItemListOf(menu, false)) {
        for (const QPointer<QAction> &item : list->items) {
            if (item != nullptr)
                result.append(item);
        }
    }
    return result;
}

void AttachSubMenus(const QMenu *menu, QMenu *subMenu) {
    for (QAction *item : HierarchicalItems(menu)) {
        if (item->menu() != subMenu)
            item->setMenu(subMenu);
    }
}

OSStatus BuildSubMenu(std::int32_t depth, const FSSpec *folderSpec) {
    if (depth < 0 || depth >= kDepthMenuCount || subMenuRef[depth] == nullptr)
        return paramErr;
    QMenu *menu = subMenuRef[depth];

    // The previous folder items go; the menu's own items below them stay.
    {
        const QList<QAction *> actions = menu->actions();
        const qsizetype old = std::min<qsizetype>(subMenuItems[depth], actions.size());
        for (qsizetype i = 0; i < old; ++i)
            delete actions[i];
        subMenuItems[depth] = 0;
        if (HierarchicalItemList *list = ItemListOf(menu, false))
            list->items.clear();
    }

    const FolderListing listing =
        ReadFolderEntries(folderSpec != nullptr ? folderSpec->path : QByteArray(), depth);
    const bool icons = ShowsIcons(depth, listing.found);
    QMenu *subMenu = depth + 1 < kDepthMenuCount ? subMenuRef[depth + 1].data() : nullptr;
    HierarchicalItemList *hierarchical = nullptr;

    // Made while no one sees them, then inserted in one go above the menu's own items.
    QList<QAction *> items;
    items.reserve(qsizetype(listing.entries.size()));
    for (const FolderEntry &entry : listing.entries) {
        auto *item = new QAction(menu);
        item->setText(MenuItemTextFor(entry.text));
        item->setSeparator(entry.separator);
        if (entry.submenu) {
            if (hierarchical == nullptr)
                hierarchical = ItemListOf(menu, true);
            hierarchical->items.append(item);
            if (subMenu != nullptr)
                item->setMenu(subMenu);
        }
        if (icons)
            item->setIcon(FolderEntryIcon(entry));
        item->setData(entry.path);
        items.append(item);
    }
    if (items.isEmpty()) {
        auto *placeholder = new QAction(menu);
        placeholder->setText(MenuItemTextFor(EmptyFolderText()));
        items.append(placeholder);
    }
    const QList<QAction *> remaining = menu->actions();
    menu->insertActions(remaining.isEmpty() ? nullptr : remaining.first(), items);
    subMenuItems[depth] = std::uint32_t(items.size());
    return listing.status;
}
