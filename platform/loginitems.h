// Login items: the programs the desktop starts when the user logs in.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace platform {

enum class LoginItemsScope { CurrentUser, AnyUser };

struct LoginItem {
    QString entryName;              // identifies the entry within its list
    std::optional<QByteArray> path; // the program it starts
    std::optional<bool> hide;       // whether the program is asked to stay hidden
};

class LoginItems {
public:
    virtual ~LoginItems() = default;
    // The enabled entries of a list, in the list's order.
    virtual QList<LoginItem> items(LoginItemsScope scope) = 0;
    virtual bool remove(LoginItemsScope scope, const QString &entryName) = 0;
    // Appends an entry that starts `path`.
    virtual bool add(LoginItemsScope scope, const QByteArray &path, bool hide) = 0;

    // Whether `path` leads to a copy of this program, and to this very copy.
    virtual bool isKestrelMenuProgram(const QByteArray &path) = 0;
    virtual bool isThisProgram(const QByteArray &path) = 0;
    // The path of the running copy, or nothing when it cannot be told.
    virtual std::optional<QByteArray> thisProgramPath() = 0;
};

} // namespace platform
