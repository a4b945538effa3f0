// The preferences file: every setting, as a stream of tagged big-endian blocks.
//
// Each block is a four-character tag, a signed 32-bit length and that many
// bytes of data. "apse", "mspc" (each followed by the menu's carried "mals" and
// its folder path "mpth"), "gese", then "end!". Unknown tags are skipped.
#pragma once

#include "core/settings.h"
#include "core/types.h"

inline constexpr const char *kPrefsFileName = "Kestrel Menu Preferences";

inline constexpr OSType kAppleMenuSettingsTag = FourCC("apse");
inline constexpr OSType kMenuSpecTag = FourCC("mspc");
inline constexpr OSType kMenuAliasTag = FourCC("mals");
inline constexpr OSType kMenuPathTag = FourCC("mpth");
inline constexpr OSType kGeneralSettingsTag = FourCC("gese");
inline constexpr OSType kEndTag = FourCC("end!");

// The preferences file's path; the preferences folder is made if missing.
OSErr GetPrefsFile(FSSpec *spec);

// Reads the file over the settings records, or installs the first-run defaults
// when there is none. A file that cannot be read or is damaged gets an alert
// that offers the defaults in its place. Non-zero means start-up must stop.
OSErr LoadPreferences();
// Reads one block's data (its header already read): `blockLength` bytes, or
// `capacity` bytes and a skip over the rest.
OSErr LoadPreference(int refNum, std::int32_t blockLength, void *buffer, std::int32_t capacity);

// Writes every setting to a new file that replaces the old one (the file a
// link leads to, when the name is a link) only once it is complete, so a
// failed save leaves the previous file as it was. A failure is logged and
// notified, never shown in an alert.
OSErr SavePreferences();
OSErr SavePreference(int refNum, OSType tag, const void *data, std::int32_t length);
