// The running processes, and which programs stand for a creator code.
#pragma once

#include "core/types.h"

#include <QByteArray>
#include <QList>

#include <cstdint>
#include <span>

namespace platform {

struct RunningProcess {
    std::int64_t pid = 0;
    // The names the process goes by: its executable's file name, that of its
    // first argument and, for a script, the script's.
    QList<QByteArray> programNames;
    // A live process of this user; zombies, kernel threads and other users'
    // processes are not applications.
    bool isApplication = false;
};

class Processes {
public:
    virtual ~Processes() = default;
    virtual QList<RunningProcess> running() = 0;
};

// The program file names that a creator code stands for here; empty for codes
// no program here has.
std::span<const char *const> ProgramsOfCreator(OSType creator);

// Whether `process` is one of the programs of `creator`.
bool IsProgramOfCreator(const RunningProcess &process, OSType creator);

} // namespace platform
