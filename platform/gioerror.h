// Statuses for the errors GIO and GLib report (domain and code of a GError).
#pragma once

#include "core/types.h"

#include <cstdint>

namespace platform {

OSErr OSErrFromGioError(std::uint32_t domain, int code);

} // namespace platform
