// The folders the desktop shows with icons of their own: the home folder, the
// user's folders named in user-dirs.dirs, the root of the file system and the
// drives mounted on it.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

class SpecialFolders {
public:
    // As the environment, the user's folder settings and the mount table stand now.
    static SpecialFolders current();
    // The theme icon of the folder at `canonicalPath`; empty for an ordinary folder.
    QString iconFor(const QByteArray &canonicalPath) const;

private:
    void addMounts();
    void addUserFolders(const QByteArray &home);

    QHash<QByteArray, QString> icons_;
    // Drives by mount point, each with its device; whether one can be taken
    // out is asked only when its folder is listed.
    QHash<QByteArray, QByteArray> mounts_;
};
