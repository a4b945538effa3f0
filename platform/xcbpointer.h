// The pointer through one xcb_query_pointer per call; off X11, Qt's own view.
#pragma once

#include "platform/pointer.h"

namespace platform {

class XcbPointer final : public Pointer {
public:
    XcbPointer();
    ~XcbPointer() override;
    XcbPointer(const XcbPointer &) = delete;
    XcbPointer &operator=(const XcbPointer &) = delete;
    PointerState query() override;

private:
    // A connection of its own: on Qt's, whose reader thread waits for events,
    // every reply wakes that thread too, fifteen times a second.
    struct Connection;
    Connection *connection_ = nullptr;
};

} // namespace platform
