// One running copy per preferences folder: two copies would each rewrite the
// same preferences file at quit.
#pragma once

#include <QByteArray>

class SingleInstance {
public:
    SingleInstance() = default;
    ~SingleInstance();
    SingleInstance(const SingleInstance &) = delete;
    SingleInstance &operator=(const SingleInstance &) = delete;

    // True when this copy may run: no other holds the lock. A lock that cannot
    // be made at all does not stop the program.
    bool acquire();

    // The lock file for the current preferences folder.
    static QByteArray lockPath();

private:
    int fd_ = -1;
};
