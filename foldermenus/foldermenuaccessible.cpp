#include "foldermenus/foldermenuaccessible.h"

#include "foldermenus/foldermenu.h"
#include "resources/menus.h"

#include <QPointer>
#include <QWindow>

// One row of a folder menu; item -1 is the row that says nothing matches.
class FolderMenuItemAccessible final : public QAccessibleInterface,
                                       public QAccessibleActionInterface {
public:
    FolderMenuItemAccessible(FolderMenu *menu, int index) : menu_(menu), index_(index) {}

    bool isValid() const override {
        return menu_ != nullptr && index_ >= -1 && index_ < menu_->itemCount();
    }
    QObject *object() const override { return nullptr; }
    QWindow *window() const override {
        return menu_ != nullptr ? menu_->window()->windowHandle() : nullptr;
    }
    QAccessibleInterface *parent() const override {
        return QAccessible::queryAccessibleInterface(menu_);
    }
    QAccessibleInterface *child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    QString text(QAccessible::Text kind) const override {
        if (kind != QAccessible::Name || !isValid())
            return {};
        return index_ < 0 ? NoMatchingItemsText() : menu_->itemText(index_ + 1);
    }
    void setText(QAccessible::Text, const QString &) override {}
    QRect rect() const override {
        if (!isValid())
            return {};
        const int row = menu_->rowOfItem(index_);
        const QRect local = row >= 0 ? menu_->rowRect(row).intersected(menu_->viewport()) : QRect();
        return local.isEmpty() ? QRect() : QRect(menu_->mapToGlobal(local.topLeft()), local.size());
    }
    QAccessible::Role role() const override {
        return separator() ? QAccessible::Separator : QAccessible::MenuItem;
    }
    QAccessible::State state() const override {
        QAccessible::State state;
        if (!isValid())
            return state;
        const int row = menu_->rowOfItem(index_);
        state.invisible = row < 0 || rect().isEmpty();
        state.offscreen = state.invisible;
        state.disabled = row >= 0 && !menu_->isSelectable(row) && !separator();
        state.focusable = row >= 0 && menu_->isSelectable(row);
        state.focused = state.selected = row >= 0 && row == menu_->current_;
        state.hasPopup = row >= 0 && menu_->leadsFurther(row);
        return state;
    }
    void *interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface
                   ? static_cast<QAccessibleActionInterface *>(this)
                   : nullptr;
    }

    QStringList actionNames() const override {
        const int row = isValid() ? menu_->rowOfItem(index_) : -1;
        if (row < 0 || !menu_->isSelectable(row))
            return {};
        if (menu_->leadsFurther(row))
            return {showMenuAction(), pressAction()};
        return {pressAction()};
    }
    void doAction(const QString &name) override {
        const int row = isValid() ? menu_->rowOfItem(index_) : -1;
        if (row < 0 || !menu_->isSelectable(row))
            return;
        menu_->setActiveItem(index_ + 1);
        if (name == showMenuAction() && menu_->leadsFurther(row))
            menu_->openChild(true);
        else if (name == pressAction() && menu_->kindOfRow(row) != FolderMenu::RowKind::Command)
            menu_->choose(row, Qt::NoButton);
    }
    QStringList keyBindingsForAction(const QString &) const override { return {}; }

private:
    bool separator() const {
        return isValid() && menu_->kindOfItem(index_) == FolderMenu::RowKind::Separator;
    }

    QPointer<FolderMenu> menu_;
    int index_;
};

namespace {

QAccessibleInterface *FolderMenuFactory(const QString &className, QObject *object) {
    if (className == QLatin1String("FolderMenu") && object != nullptr && object->isWidgetType())
        return new FolderMenuAccessible(static_cast<FolderMenu *>(object));
    return nullptr;
}

} // namespace

void InstallFolderMenuAccessibility() {
    static const bool installed = [] {
        QAccessible::installFactory(FolderMenuFactory);
        return true;
    }();
    Q_UNUSED(installed);
}

FolderMenuAccessible::FolderMenuAccessible(FolderMenu *menu)
    : QAccessibleWidget(menu, QAccessible::PopupMenu) {
    menu->accessible_ = this;
}

FolderMenuAccessible::~FolderMenuAccessible() {
    if (FolderMenu *folderMenu = menu(); folderMenu != nullptr && folderMenu->accessible_ == this)
        folderMenu->accessible_ = nullptr;
    forgetItems();
}

FolderMenu *FolderMenuAccessible::menu() const {
    return static_cast<FolderMenu *>(object());
}

void FolderMenuAccessible::forgetItems() {
    for (const QAccessible::Id id : std::as_const(items_))
        QAccessible::deleteAccessibleInterface(id);
    items_.clear();
}

int FolderMenuAccessible::childCount() const {
    menu()->ensureLayout();
    return menu()->rowCount();
}

QAccessibleInterface *FolderMenuAccessible::child(int index) const {
    FolderMenu *folderMenu = menu();
    folderMenu->ensureLayout();
    if (index < 0 || index >= folderMenu->rowCount())
        return nullptr;
    const int item = folderMenu->rows_[std::size_t(index)];
    auto known = items_.constFind(item);
    if (known == items_.constEnd())
        known = items_.insert(item, QAccessible::registerAccessibleInterface(
                                        new FolderMenuItemAccessible(folderMenu, item)));
    return QAccessible::accessibleInterface(*known);
}

int FolderMenuAccessible::indexOfChild(const QAccessibleInterface *child) const {
    for (auto known = items_.constBegin(); known != items_.constEnd(); ++known) {
        if (QAccessible::accessibleInterface(known.value()) == child)
            return menu()->rowOfItem(known.key());
    }
    return -1;
}

QAccessibleInterface *FolderMenuAccessible::childAt(int x, int y) const {
    return child(menu()->rowAt(menu()->mapFromGlobal(QPoint(x, y))));
}

QAccessibleInterface *FolderMenuAccessible::focusChild() const {
    return child(menu()->current_);
}

QString FolderMenuAccessible::text(QAccessible::Text kind) const {
    if (kind != QAccessible::Name)
        return QAccessibleWidget::text(kind);
    // A submenu is named after the item that opened it.
    if (const FolderMenu *parent = menu()->parentMenu(); parent != nullptr)
        return parent->itemText(parent->childItem_ + 1);
    return menu()->title();
}
