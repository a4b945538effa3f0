// The texts of the rows a folder menu shows, in order.
#pragma once

#include "foldermenus/foldermenu.h"

#include <QStringList>

inline QStringList Shown(const FolderMenu *menu) {
    QStringList texts;
    for (const int item : menu->shownItems())
        texts.append(menu->itemText(item));
    return texts;
}
