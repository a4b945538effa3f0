// A private home for one test: HOME, the XDG folders, the run-time folder and
// TMPDIR all point into a fresh temporary folder, so no test ever sees the
// user's own settings, and whatever the test leaves goes with the folder.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QHash>
#include <QList>
#include <QProcessEnvironment>
#include <QTemporaryDir>

class TempEnvironment {
public:
    TempEnvironment();
    ~TempEnvironment();
    TempEnvironment(const TempEnvironment &) = delete;
    TempEnvironment &operator=(const TempEnvironment &) = delete;

    QByteArray root() const { return QFile::encodeName(dir_.path()); } // the temporary folder
    QByteArray home() const { return root() + "/home"; }               // $HOME
    QByteArray configHome() const { return root() + "/home/.config"; } // $XDG_CONFIG_HOME
    QByteArray runtimeDir() const { return root() + "/run"; }          // $XDG_RUNTIME_DIR

    // The environment for a child process, with the variables above.
    QProcessEnvironment processEnvironment() const;

private:
    QList<std::pair<const char *, QByteArray>> variables() const;

    QTemporaryDir dir_;
    QHash<QByteArray, std::optional<QByteArray>> saved_;
};

// Removes a tree byte for byte: names that are not UTF-8 defeat QDir, not this.
void RemoveTree(const QByteArray &root);
// Writes `contents` to `path`, making folders as needed; fails the test if it cannot.
void WriteFile(const QByteArray &path, const QByteArray &contents);
QByteArray ReadFile(const QByteArray &path);
// The target of the link at `path`, byte for byte; empty if it is none.
QByteArray ReadLink(const QByteArray &path);
