// How screen readers see a folder menu: a pop-up menu whose children are the
// rows it shows, each a menu item (or a separator) named by its whole text,
// made only when asked for.
#pragma once

#include <QAccessibleWidget>
#include <QHash>

class FolderMenu;

// Makes folder menus known to the accessibility framework; once is enough.
void InstallFolderMenuAccessibility();

class FolderMenuAccessible final : public QAccessibleWidget {
public:
    explicit FolderMenuAccessible(FolderMenu *menu);
    ~FolderMenuAccessible() override;

    int childCount() const override;
    QAccessibleInterface *child(int index) const override;
    int indexOfChild(const QAccessibleInterface *child) const override;
    QAccessibleInterface *childAt(int x, int y) const override;
    QAccessibleInterface *focusChild() const override;
    QString text(QAccessible::Text kind) const override;

    // The menu's items changed: the interfaces made for the old ones go.
    void forgetItems();

private:
    FolderMenu *menu() const;
    mutable QHash<int, QAccessible::Id> items_; // by item index
};
