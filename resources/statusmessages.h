// The status message tables and the fallback text of the error alert.
#pragma once

#include "core/types.h"

#include <QString>
#include <span>

struct StatusMessage {
    OSErr code;
    const char *message;     // untranslated; shown through tr()
    const char *explanation; // untranslated; shown through tr()
};

// Searched table by table, entry by entry; the first matching code wins.
std::span<const std::span<const StatusMessage>> StatusMessageTables();

// Shown in place of a message or explanation that no table supplies.
QString FallbackErrorText();

// The context name for translations of the tables.
inline constexpr const char *kStatusMessagesContext = "StatusMessages";
