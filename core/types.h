// Basic types shared by every subsystem: statuses, four-character codes and
// length-prefixed strings.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

using OSErr = std::int16_t;    // 16-bit status, 0 for success
using OSStatus = std::int32_t; // wider status; its low 16 bits are what gets reported
using OSType = std::uint32_t;  // four characters, big-endian order, compared as a number

// "left" -> 0x6C656674. Codes are always exactly four characters.
constexpr OSType FourCC(const char (&code)[5]) {
    return (OSType(std::uint8_t(code[0])) << 24) | (OSType(std::uint8_t(code[1])) << 16) |
           (OSType(std::uint8_t(code[2])) << 8) | OSType(std::uint8_t(code[3]));
}

// The statuses this program produces. The numbers are the classic ones so that the
// messages, the preferences file and the logs agree with one another.
enum : OSErr {
    noErr = 0,
    unimpErr = -4,
    dirFulErr = -33,
    dskFulErr = -34,
    nsvErr = -35,
    ioErr = -36,
    bdNamErr = -37,
    fnOpnErr = -38,
    eofErr = -39,
    posErr = -40,
    tmfoErr = -42,
    fnfErr = -43,
    wPrErr = -44,
    fLckdErr = -45,
    fBsyErr = -47,
    dupFNErr = -48,
    opWrErr = -49,
    paramErr = -50,
    rfNumErr = -51,
    permErr = -54,
    memFullErr = -108,
    dirNFErr = -120,
    userCanceledErr = -128,
    resNotFound = -192,
    procNotFound = -600,
    connectionInvalid = -609,
    errAEEventNotHandled = -1708,
    errAETimeout = -1712,
    errAEEventFailed = -10000,
    errFSNoMoreItems = -1417,
    notAFileErr = -1302,
    fsDataTooBigErr = -1310,
    badDragFlavorErr = -1852,
    dragNotAcceptedErr = -1857,
    kLSApplicationNotFoundErr = -10814,
    afpAccessDenied = -5000,
};

// A length-prefixed byte string of up to 255 bytes (byte 0 is the length).
using Str255 = unsigned char[256];
using ConstStr255Param = const unsigned char *;

// Copies `text` into `out` as a length-prefixed string, cut to 255 bytes.
inline void SetPString(Str255 out, std::string_view text) {
    const std::size_t length = text.size() > 255 ? 255 : text.size();
    out[0] = static_cast<unsigned char>(length);
    if (length > 0)
        std::memcpy(out + 1, text.data(), length);
}

inline std::string_view PStringView(ConstStr255Param text) {
    return {reinterpret_cast<const char *>(text + 1), text[0]};
}

// Keyboard modifier bits, numbered as the settings store them. The platform layer
// maps Ctrl to cmdKey, Shift to shiftKey, Caps Lock to alphaLock, Alt to
// optionKey and Super to controlKey.
enum : std::uint16_t {
    cmdKey = 0x0100,
    shiftKey = 0x0200,
    alphaLock = 0x0400,
    optionKey = 0x0800,
    controlKey = 0x1000,
};

// A running program: its process id and, where one is known, the X11 window that
// stands for it. {0, 0} is no process.
struct ProcessSerialNumber {
    std::int64_t pid = 0;
    std::uint32_t window = 0;
    friend bool operator==(const ProcessSerialNumber &, const ProcessSerialNumber &) = default;
};

// A rectangle of 16-bit coordinates, edges in the order top, left, bottom, right.
struct Rect {
    std::int16_t top = 0;
    std::int16_t left = 0;
    std::int16_t bottom = 0;
    std::int16_t right = 0;
    friend bool operator==(const Rect &, const Rect &) = default;
};
