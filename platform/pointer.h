// The pointer: where it is, whether a button is held and which modifier keys
// are down, all taken by one query so that the three agree with one another;
// and word of input, so that nobody has to ask while nothing moves.
#pragma once

#include <QPoint>

#include <cstdint>
#include <functional>

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
    // Calls `arrived` once the pointer moves or a key or button changes
    // anywhere on the display, then holds back until takeInput() finds the
    // display quiet. False when the display cannot tell: then the caller has
    // to ask at intervals. A null `arrived` ends the watch.
    virtual bool watchInput(std::function<void()> arrived) = 0;
    // Whether input arrived since the last look. When none did, the next
    // input calls `arrived` again.
    virtual bool takeInput() = 0;
};

} // namespace platform
