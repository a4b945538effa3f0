// Asking the desktop's file manager to open, reveal or show the information of
// items, and bringing it to the front.
//
// The file manager is the session's org.freedesktop.FileManager1 service when
// one is running or can be started; otherwise the default application for
// folders stands in for it, which can open items and the folders that hold
// them but has no information window.
#pragma once

#include "core/settings.h"
#include "core/types.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>

enum FinderAction : std::int16_t {
    kFinderOpen = 0,
    kFinderOpenWith = 1, // extra: the application (a desktop entry)
    kFinderReveal = 2,
    kFinderDuplicate = 3, // extra: the destination folder
    kFinderMove = 4,      // extra: the destination folder
    kFinderGetInfo = 5,
};

// Codes that identify the file manager and its alternative.
inline constexpr OSType kFinderType = FourCC("FNDR");
inline constexpr OSType kFinderCreator = FourCC("MACS");
inline constexpr OSType kApplicationType = FourCC("APPL");
inline constexpr OSType kAlternateFinderCreator = FourCC("PFdR");

// Items as they travel to the file manager: one item, or a list of them.
// Each item is an absolute path, bytes as the file system holds them.
struct AEDesc {
    bool isList = false;
    QList<QByteArray> items;
};
using AEDescList = AEDesc;

// Whether a process of that type and creator can be had: for the file manager
// and its alternative, whether they exist; otherwise a running application of
// that creator. `*psn` is the process, or {0, 0} when it is not running yet.
bool FindProcess(OSType type, OSType creator, ProcessSerialNumber *psn);
// The file manager, else the alternative (`*isAlternateFinder` says which, when
// not null). procNotFound when neither exists; every status is reported.
OSErr GetFinderProcess(ProcessSerialNumber *psn, bool *isAlternateFinder);
OSErr BringFinderToFront();

OSErr CreateFileDesc(const FSSpec *file, AEDesc *desc);
OSErr AddFileToAEList(const FSSpec *file, AEDescList *list);
// `extra` is the application (open with) or the destination folder (duplicate,
// move); null otherwise.
OSErr DoFinderFilesToDesc(FinderAction action, const AEDesc *items, const AEDesc *extra);
OSErr DoFinderFiles(FinderAction action, const AEDescList *items, const FSSpec *extra);
// The single-item entry point of the menus: links are followed first. Nothing
// waits for the file manager: a request it fails later is reported then.
OSErr DoFinderFile(FinderAction action, const FSSpec *file, const FSSpec *extra);

// Runs `launch` when the launcher at `launcher` (a desktop entry or an
// application bundle) is trusted, or once the user says so, shown `command`,
// what it would run; userCanceledErr when the user says no.
OSErr LaunchIfTrusted(const QByteArray &launcher, const QString &command,
                      const std::function<OSErr()> &launch);
