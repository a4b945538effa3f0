// The pointer through one xcb_query_pointer per call; off X11, Qt's own view.
#pragma once

#include "platform/pointer.h"

namespace platform {

class XcbPointer final : public Pointer {
public:
    PointerState query() override;
};

} // namespace platform
