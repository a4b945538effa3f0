// One running copy per user and preferences folder: two copies would each
// rewrite the same preferences file at quit.
#pragma once

#include "core/types.h"

#include <QByteArray>
#include <QList>

class SingleInstance {
public:
    enum class Outcome { Acquired, HeldByAnother, Failed };

    SingleInstance() = default;
    ~SingleInstance();
    SingleInstance(const SingleInstance &) = delete;
    SingleInstance &operator=(const SingleInstance &) = delete;

    // Takes the lock in every lock folder where it can be made. Held in any
    // of them means another copy runs; made in none, this copy must not run,
    // since it could not tell.
    Outcome acquire();
    // Tells the user, in an alert, that the lock could not be made.
    void reportFailure() const;

    // The lock's file name for the current preferences folder.
    static QByteArray lockName();
    // The session's run-time folder (when it is private to this user) and a
    // private folder in the user's cache, which does not depend on the session.
    static QList<QByteArray> lockFolders();

private:
    QList<int> fds_;
    OSErr failure_ = noErr;
};
