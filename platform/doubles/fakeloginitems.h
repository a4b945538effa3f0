// Login items kept in memory, with programs identified by a table.
#pragma once

#include "platform/loginitems.h"

#include <QSet>

namespace platform {

class FakeLoginItems : public LoginItems {
public:
    QList<LoginItem> items(LoginItemsScope scope) override;
    bool remove(LoginItemsScope scope, const QString &entryName) override;
    bool add(LoginItemsScope scope, const QByteArray &path, bool hide) override;
    bool isKestrelMenuProgram(const QByteArray &path) override;
    bool isThisProgram(const QByteArray &path) override;
    std::optional<QByteArray> thisProgramPath() override;

    QList<LoginItem> currentUser;
    QList<LoginItem> anyUser;
    QSet<QByteArray> kestrelPrograms; // paths that are copies of this program
    std::optional<QByteArray> self;   // the running copy
    bool failWrites = false;
    int nextEntry = 1;
};

} // namespace platform
