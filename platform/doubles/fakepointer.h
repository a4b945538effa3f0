// A pointer that stays where the test puts it; input arrives when the test says.
#pragma once

#include "platform/pointer.h"

namespace platform {

class FakePointer : public Pointer {
public:
    PointerState query() override {
        ++queries;
        return state;
    }
    bool watchInput(std::function<void()> callback) override {
        arrived = std::move(callback);
        return watchable;
    }
    bool takeInput() override { return std::exchange(inputPending, false); }

    PointerState state;
    int queries = 0;
    bool watchable = false; // whether the display can tell of input
    bool inputPending = false;
    std::function<void()> arrived;
};

} // namespace platform
