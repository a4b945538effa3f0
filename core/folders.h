// The standard folders, as the freedesktop base directories define them.
#pragma once

#include "core/types.h"

#include <QByteArray>
#include <QList>

// The user's preferences folder ($XDG_CONFIG_HOME, else ~/.config), created when
// `create` is set and it is missing.
OSErr FindPreferencesFolder(QByteArray *path, bool create);
// $HOME; fnfErr when it is unset or not a folder.
OSErr FindHomeFolder(QByteArray *path);
// The system's applications folder.
OSErr FindApplicationsFolder(QByteArray *path);
// The folders that hold application entries, most important first:
// $XDG_DATA_HOME, then each of $XDG_DATA_DIRS, each with "/applications".
QList<QByteArray> ApplicationFolders();
// The absolute folders of a ':'-separated search path such as $XDG_DATA_DIRS,
// `fallback` when it is unset or empty.
QList<QByteArray> SearchPath(const char *variable, const QByteArray &fallback);

// Joins a folder and a name with exactly one slash between them.
QByteArray JoinPath(const QByteArray &folder, const QByteArray &name);
// The parent folder of an absolute path; "/" is its own parent.
QByteArray ParentPath(const QByteArray &path);
// The path with every link and "." or ".." resolved; empty when it cannot be
// resolved (errno says why).
QByteArray RealPath(const QByteArray &path);
// The last component of a path ("" for "/").
QByteArray LastPathComponent(const QByteArray &path);
// "file://" and the path's bytes, percent-encoded byte by byte, so that any
// name (spaces, "#", "%", line breaks, bytes that are not UTF-8) comes back
// exactly when the address is decoded.
QByteArray FileUriFromPath(const QByteArray &path);
