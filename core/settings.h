// The settings records: the configured menus, the look and hiding rule of the
// left-hand titles, and the start-up and icon options. Every other subsystem
// reads these globals directly; the preferences file stores them and the
// preferences dialog edits them in place.
#pragma once

#include "core/types.h"

#include <QByteArray>

// An item on disk: its absolute path, bytes as the file system holds them.
// Empty means no item.
struct FSSpec {
    QByteArray path;
    friend bool operator==(const FSSpec &, const FSSpec &) = default;
};

// Codes of MenuSpec and AppleMenuSettings fields.
inline constexpr OSType kSideLeft = FourCC("left");
inline constexpr OSType kSideRight = FourCC("rght");
inline constexpr OSType kContentsFolder = FourCC("fold");
inline constexpr OSType kContentsProcesses = FourCC("proc");
inline constexpr OSType kTitleColourPicture = FourCC("clap");
inline constexpr OSType kTitleFrontApplication = FourCC("cuap");

inline constexpr OSType kColourRainbow = FourCC("rbow");
inline constexpr OSType kColourGrey = FourCC("grap");
inline constexpr OSType kColourBlue = FourCC("blue");
inline constexpr OSType kColourRed = FourCC("red ");
inline constexpr OSType kColourGreen = FourCC("gren");

inline constexpr OSType kAreaTop = FourCC("top ");
inline constexpr OSType kAreaBottom = FourCC("bott");
inline constexpr OSType kAreaLeft = FourCC("left");
inline constexpr OSType kAreaRight = FourCC("rght");
inline constexpr OSType kAreaCentre = FourCC("cntr");
inline constexpr OSType kAreaOutside = FourCC("outs");

// One configured menu. The list order is the order of the titles and of the
// blocks in the preferences file.
struct MenuSpec {
    MenuSpec *next;
    OSType side;      // "left" gets a title; "rght" is kept and stored only
    OSType contents;  // "fold": the menu shows `folder`; "proc": no folder
    OSType titleKind; // "clap": coloured picture; "cuap": front application (not drawn)
    FSSpec folder;    // meaningful only for "fold"
    // The folder's alias record as read from the preferences file, carried
    // unchanged so that files stay exchangeable with other readers.
    QByteArray folderAlias;
};

struct AppleMenuSettings {
    OSType iconColour;
    std::int16_t hideMode;       // 1 hover+modifier, 2 hover over an area, 3 inverse of 1
    std::uint16_t hideModifiers; // modifier mask for modes 1 and 3
    OSType hideArea;
};

struct GeneralSettings {
    std::uint16_t openAtStartup;
    std::uint16_t finderToFront;
    std::uint16_t mainMenuIcons; // only the low byte counts
    std::uint16_t subMenuIcons;
    std::int16_t subMenuIconLimit;
};

// The compiled-in defaults, in force wherever the preferences file supplies nothing.
inline constexpr AppleMenuSettings kDefaultAppleMenuSettings{kColourRainbow, 1, controlKey,
                                                             kAreaLeft};
inline constexpr GeneralSettings kDefaultGeneralSettings{1, 1, 1, 1, 50};

extern MenuSpec *firstMenuSpec;
extern AppleMenuSettings appleMenuSettings;
extern GeneralSettings generalSettings;

// The menu folder made on first run, inside the preferences folder.
inline constexpr const char *kMenuItemsFolderName = "Kestrel Menu Items";

// Appends a new menu; `folder` null leaves the record's folder empty. On an
// allocation failure `*status` is set (and reported) and null is returned.
MenuSpec *AddMenuToPreferences(OSErr *status, OSType side, OSType contents, OSType titleKind,
                               const FSSpec *folder);
OSErr RemoveMenuFromPreferences(MenuSpec *menuSpec);

// First run: makes the menu folder with links to home, applications and the
// startup volume, and configures the two default menus.
OSErr SetDefaultPreferences();

// The folder that the startup volume's link points to: the climb from `start`
// towards the root, at most ten steps. Empty when `start` cannot be looked up.
QByteArray ClimbToStartupVolume(const QByteArray &start);
