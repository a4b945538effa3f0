// A pointer that stays where the test puts it.
#pragma once

#include "platform/pointer.h"

namespace platform {

class FakePointer : public Pointer {
public:
    PointerState query() override {
        ++queries;
        return state;
    }
    PointerState state;
    int queries = 0;
};

} // namespace platform
