// The chooser of "Open With…": the applications that say they open the item's
// type first, every other application below them.
#pragma once

#include "platform/launcher.h"

#include <QByteArray>
#include <QList>
#include <QString>

struct ApplicationChoice {
    QByteArray id; // empty when the user cancelled
    bool makeDefault = false;
};

ApplicationChoice ChooseApplication(const QString &itemName, const platform::FileType &type,
                                    const QList<platform::ApplicationInfo> &declared,
                                    const QList<platform::ApplicationInfo> &others);
