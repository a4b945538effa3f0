// Statuses for the errors GIO and GLib report.
#pragma once

#include "core/types.h"

typedef struct _GError GError;

namespace platform {

// The status for `error` (its domain and code); frees it.
OSErr TakeGioError(GError *error);

} // namespace platform
