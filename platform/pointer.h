// The pointer: where it is, whether a button is held and which modifier keys
// are down, all taken by one query so that the three agree with one another.
#pragma once

#include <QPoint>

#include <cstdint>

namespace platform {

struct PointerState {
    QPoint position;             // global, in device-independent pixels
    bool buttonDown = false;     // any mouse button
    std::uint16_t modifiers = 0; // cmdKey, shiftKey, alphaLock, optionKey, controlKey
};

class Pointer {
public:
    virtual ~Pointer() = default;
    virtual PointerState query() = 0;
};

} // namespace platform
