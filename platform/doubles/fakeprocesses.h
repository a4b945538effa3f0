// A process table that is just a list.
#pragma once

#include "platform/processes.h"

namespace platform {

class FakeProcesses : public Processes {
public:
    QList<RunningProcess> running() override { return table; }
    QList<RunningProcess> table;
};

} // namespace platform
