// The records as the preferences file holds them: big-endian, packed as the
// original program laid them out in memory.
#pragma once

#include "core/settings.h"
#include "core/types.h"

#include <bit>
#include <cstdint>

#pragma pack(push, 2)
struct FSSpecImage {
    std::int16_t vRefNum;   // a stable negative number derived from the device
    std::int32_t parID;     // the parent folder's inode, low 32 bits
    unsigned char name[64]; // length byte and up to 63 bytes
};

struct MenuSpecImage {
    std::uint32_t link; // meaningless in the file; written as 0, ignored when read
    OSType side;
    OSType contents;
    OSType titleKind;
    FSSpecImage folder;
    std::uint16_t padding; // ignored when read
};
#pragma pack(pop)

static_assert(sizeof(FSSpecImage) == 70);
static_assert(sizeof(MenuSpecImage) == 88);
static_assert(sizeof(AppleMenuSettings) == 12);
static_assert(sizeof(GeneralSettings) == 10);

// The image of an item: device, parent inode and the name cut to 63 bytes
// without splitting a character. Parts that cannot be looked up stay 0.
FSSpecImage MakeFSSpecImage(const FSSpec &spec);

namespace byteorder {

template <typename T> constexpr T Swap(T value) {
    if constexpr (sizeof(T) == 2)
        return T(std::uint16_t((std::uint16_t(value) >> 8) | (std::uint16_t(value) << 8)));
    else
        return T(__builtin_bswap32(std::uint32_t(value)));
}

// Reverses each numeric field on a little-endian host, does nothing on a
// big-endian one. Loading and saving perform the same operation.
template <std::endian Host> void ConvertMenuSpec(MenuSpecImage *spec) {
    if constexpr (Host == std::endian::little) {
        spec->side = Swap(spec->side);
        spec->contents = Swap(spec->contents);
        spec->titleKind = Swap(spec->titleKind);
        spec->folder.vRefNum = Swap(spec->folder.vRefNum);
        spec->folder.parID = Swap(spec->folder.parID);
    }
}

template <std::endian Host> void ConvertAppleMenuSettings(AppleMenuSettings *settings) {
    if constexpr (Host == std::endian::little) {
        settings->iconColour = Swap(settings->iconColour);
        settings->hideMode = Swap(settings->hideMode);
        settings->hideModifiers = Swap(settings->hideModifiers);
        settings->hideArea = Swap(settings->hideArea);
    }
}

template <std::endian Host> void ConvertGeneralSettings(GeneralSettings *settings) {
    if constexpr (Host == std::endian::little) {
        settings->openAtStartup = Swap(settings->openAtStartup);
        settings->finderToFront = Swap(settings->finderToFront);
        settings->mainMenuIcons = Swap(settings->mainMenuIcons);
        settings->subMenuIcons = Swap(settings->subMenuIcons);
        settings->subMenuIconLimit = Swap(settings->subMenuIconLimit);
    }
}

} // namespace byteorder

inline void ToSaveMenuSpec(MenuSpecImage *spec) {
    byteorder::ConvertMenuSpec<std::endian::native>(spec);
}
inline void ToLoadMenuSpec(MenuSpecImage *spec) {
    byteorder::ConvertMenuSpec<std::endian::native>(spec);
}
inline void ToSaveAppleMenuSettings(AppleMenuSettings *settings) {
    byteorder::ConvertAppleMenuSettings<std::endian::native>(settings);
}
inline void ToLoadAppleMenuSettings(AppleMenuSettings *settings) {
    byteorder::ConvertAppleMenuSettings<std::endian::native>(settings);
}
inline void ToSaveGeneralSettings(GeneralSettings *settings) {
    byteorder::ConvertGeneralSettings<std::endian::native>(settings);
}
inline void ToLoadGeneralSettings(GeneralSettings *settings) {
    byteorder::ConvertGeneralSettings<std::endian::native>(settings);
}
