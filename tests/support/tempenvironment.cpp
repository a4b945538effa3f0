#include "tests/support/tempenvironment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

#include <climits>
#include <ftw.h>
#include <unistd.h>

void RemoveTree(const QByteArray &root) {
    ::nftw(
        root.constData(),
        [](const char *path, const struct stat *, int, struct FTW *) { return ::remove(path), 0; },
        16, FTW_DEPTH | FTW_PHYS);
}

TempEnvironment::TempEnvironment() {
    EXPECT_TRUE(dir_.isValid());
    for (const auto &[name, value] : variables()) {
        saved_.insert(name, qEnvironmentVariableIsSet(name) ? std::optional(qgetenv(name))
                                                            : std::nullopt);
        QDir().mkpath(QFile::decodeName(value));
        qputenv(name, value);
    }
    QFile::setPermissions(QFile::decodeName(runtimeDir()),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TempEnvironment::~TempEnvironment() {
    RemoveTree(root());
    for (auto it = saved_.cbegin(); it != saved_.cend(); ++it) {
        if (it.value())
            qputenv(it.key().constData(), *it.value());
        else
            qunsetenv(it.key().constData());
    }
}

QProcessEnvironment TempEnvironment::processEnvironment() const {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto &[name, value] : variables())
        environment.insert(QLatin1String(name), QFile::decodeName(value));
    return environment;
}

// Temporary files, and Qt's run-time folder where there is none, go in here too.
QList<std::pair<const char *, QByteArray>> TempEnvironment::variables() const {
    return {{"HOME", home()},
            {"XDG_CONFIG_HOME", configHome()},
            {"XDG_CONFIG_DIRS", root() + "/etc-xdg"},
            {"XDG_RUNTIME_DIR", runtimeDir()},
            {"XDG_DATA_HOME", root() + "/home/.local/share"},
            {"XDG_CACHE_HOME", root() + "/home/.cache"},
            {"TMPDIR", root() + "/tmp"}};
}

void WriteFile(const QByteArray &path, const QByteArray &contents) {
    const QString name = QFile::decodeName(path);
    QDir().mkpath(QFileInfo(name).path());
    QFile file(name);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.constData();
    ASSERT_EQ(file.write(contents), contents.size());
}

QByteArray ReadFile(const QByteArray &path) {
    QFile file(QFile::decodeName(path));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

QByteArray ReadLink(const QByteArray &path) {
    char target[PATH_MAX];
    const ssize_t length = ::readlink(path.constData(), target, sizeof target);
    return length < 0 ? QByteArray() : QByteArray(target, length);
}
