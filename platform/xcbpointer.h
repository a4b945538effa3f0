// The pointer through one xcb_query_pointer per call, and input through the X
// input extension's raw events on the root window, which reach this program
// wherever the pointer is and whoever has the focus, without a window of its
// own over anything; off X11, Qt's own view, asked at intervals.
#pragma once

#include "platform/pointer.h"

#include <memory>

namespace platform {

class XcbPointer final : public Pointer {
public:
    XcbPointer();
    ~XcbPointer() override;
    XcbPointer(const XcbPointer &) = delete;
    XcbPointer &operator=(const XcbPointer &) = delete;
    PointerState query() override;
    bool watchInput(std::function<void()> arrived) override;
    bool takeInput() override;

private:
    // A connection of its own: on Qt's, whose reader thread waits for events,
    // every reply and every raw event would wake that thread too.
    struct Connection;
    std::unique_ptr<Connection> connection_;
    std::function<void()> arrived_;
};

} // namespace platform
