// The running processes as /proc shows them.
#pragma once

#include "platform/processes.h"

namespace platform {

class ProcFsProcesses final : public Processes {
public:
    // `procRoot` is where the process table is mounted; tests point it elsewhere.
    explicit ProcFsProcesses(QByteArray procRoot = "/proc");
    QList<RunningProcess> running() override;

    // The entry of one process; nothing when it has gone or cannot be read.
    std::optional<RunningProcess> process(std::int64_t pid) const;

private:
    QByteArray procRoot_;
};

// The names a process goes by, from its executable's path and its arguments:
// interpreters ("python3", "sh", ...) add the script they run.
QList<QByteArray> ProgramNames(const QByteArray &executable, const QList<QByteArray> &arguments);

} // namespace platform
