// A real temporary folder for folder menu tests, filled by raw byte names.
#pragma once

#include "tests/support/tempenvironment.h"

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

class Folder {
public:
    Folder() { EXPECT_TRUE(dir_.isValid()); }
    ~Folder() { RemoveTree(path()); }
    QByteArray path() const { return QFile::encodeName(dir_.path()); }
    QByteArray at(const QByteArray &name) const { return path() + '/' + name; }
    void touch(const QByteArray &name, const QByteArray &contents = {}) const {
        const int fd = open(at(name).constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ASSERT_GE(fd, 0) << name.constData();
        ASSERT_EQ(write(fd, contents.constData(), contents.size()), contents.size());
        close(fd);
    }
    void mkdir(const QByteArray &name) const { ASSERT_EQ(::mkdir(at(name).constData(), 0755), 0); }
    // The order in which the file system hands out the entries.
    QList<QByteArray> enumerationOrder() const {
        QList<QByteArray> names;
        DIR *dir = opendir(path().constData());
        while (const dirent *entry = readdir(dir)) {
            const QByteArray name(entry->d_name);
            if (name != "." && name != "..")
                names.append(name);
        }
        closedir(dir);
        return names;
    }

private:
    QTemporaryDir dir_;
};
