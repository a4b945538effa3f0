#include "platform/xdgautostart.h"

#include "core/desktopentry.h"
#include "core/folders.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr const char *kEntrySuffix = ".desktop";

QList<QByteArray> EntryFiles(const QByteArray &folder) {
    QList<QByteArray> names;
    const QDir dir(QFile::decodeName(folder));
    for (const QString &name : dir.entryList({QStringLiteral("*.desktop")}, QDir::Files))
        names.append(QFile::encodeName(name));
    // File-name order, byte for byte, whatever the locale.
    std::sort(names.begin(), names.end());
    return names;
}

// A bare program name is looked up on PATH, as the desktop would run it.
QByteArray ResolveProgram(const QByteArray &program) {
    if (program.contains('/'))
        return program;
    for (const QByteArray &dir : qgetenv("PATH").split(':')) {
        if (dir.isEmpty())
            continue;
        const QByteArray candidate = JoinPath(dir, program);
        if (::access(candidate.constData(), X_OK) == 0)
            return candidate;
    }
    return program;
}

bool MakeFolders(const QByteArray &path) {
    return QDir().mkpath(QFile::decodeName(path));
}

} // namespace

XdgAutostart::XdgAutostart(QByteArray selfExecutable)
    : selfExecutable_(std::move(selfExecutable)) {}

QByteArray XdgAutostart::folder(LoginItemsScope scope) {
    if (scope == LoginItemsScope::CurrentUser) {
        QByteArray preferences;
        if (FindPreferencesFolder(&preferences, false) != noErr)
            return {};
        return JoinPath(preferences, "autostart");
    }
    for (const QByteArray &dir : qgetenv("XDG_CONFIG_DIRS").split(':')) {
        if (dir.startsWith('/'))
            return JoinPath(dir, "autostart");
    }
    return "/etc/xdg/autostart";
}

QList<LoginItem> XdgAutostart::items(LoginItemsScope scope) {
    QList<LoginItem> items;
    const QByteArray dir = folder(scope);
    if (dir.isEmpty())
        return items;
    for (const QByteArray &name : EntryFiles(dir)) {
        const auto entry = DesktopEntry::read(JoinPath(dir, name));
        if (entry && entry->isDisabled())
            continue;
        LoginItem item;
        item.entryName = QFile::decodeName(name);
        if (entry) {
            if (auto program = entry->execProgram())
                item.path = ResolveProgram(*program);
            if (auto hide = entry->value(QString::fromLatin1(kHideKey)))
                item.hide = *hide == QLatin1String("true");
        }
        items.append(item);
    }
    return items;
}

bool XdgAutostart::remove(LoginItemsScope scope, const QString &entryName) {
    const QByteArray dir = folder(scope);
    if (dir.isEmpty() || entryName.contains(u'/'))
        return false;
    return ::unlink(JoinPath(dir, QFile::encodeName(entryName)).constData()) == 0;
}

std::optional<QByteArray> XdgAutostart::entryText(const QByteArray &program, bool hide) {
    // Desktop entries are UTF-8 text: a path that is not cannot be written faithfully.
    if (QString::fromUtf8(program).toUtf8() != program)
        return std::nullopt;
    const auto exec = QuoteExecArgument(program);
    if (!exec)
        return std::nullopt;
    QByteArray text = "[Desktop Entry]\n"
                      "Type=Application\n"
                      "Name=Kestrel Menu\n"
                      "Comment=Folder menus at the left end of the top bar\n"
                      "Icon=kestrel-menu\n"
                      "Terminal=false\n";
    // Once the program is uninstalled the desktop skips the entry instead of
    // failing to start it at every login.
    text += "TryExec=" + EscapeDesktopValue(program) + '\n';
    text += "Exec=" + EscapeDesktopValue(*exec) + '\n';
    text += QByteArray(kHideKey) + '=' + (hide ? "true" : "false") + '\n';
    return text;
}

bool XdgAutostart::add(LoginItemsScope scope, const QByteArray &path, bool hide) {
    const QByteArray dir = folder(scope);
    const auto text = entryText(path, hide);
    if (dir.isEmpty() || !text || !MakeFolders(dir))
        return false;
    // A free name: kestrel-menu.desktop, then kestrel-menu-2.desktop, ...
    QByteArray target;
    for (int attempt = 1; attempt < 1000 && target.isEmpty(); ++attempt) {
        QByteArray name = kExecutableName;
        if (attempt > 1)
            name += '-' + QByteArray::number(attempt);
        const QByteArray candidate = JoinPath(dir, name + kEntrySuffix);
        struct stat info {};
        if (::lstat(candidate.constData(), &info) != 0 && errno == ENOENT)
            target = candidate;
    }
    if (target.isEmpty())
        return false;
    QSaveFile file(QFile::decodeName(target));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(*text);
    return file.commit();
}

bool XdgAutostart::isKestrelMenuProgram(const QByteArray &path) {
    struct stat info {};
    if (::stat(path.constData(), &info) != 0 || !S_ISREG(info.st_mode) ||
        (info.st_mode & 0111) == 0)
        return false;
    return LastPathComponent(path) == kExecutableName;
}

bool XdgAutostart::isThisProgram(const QByteArray &path) {
    struct stat self {};
    struct stat other {};
    return ::stat(selfExecutable_.constData(), &self) == 0 &&
           ::stat(path.constData(), &other) == 0 && self.st_dev == other.st_dev &&
           self.st_ino == other.st_ino;
}

std::optional<QByteArray> XdgAutostart::thisProgramPath() {
    char buffer[4096];
    const ssize_t length = ::readlink(selfExecutable_.constData(), buffer, sizeof buffer);
    QByteArray path = length > 0 && std::size_t(length) < sizeof buffer ? QByteArray(buffer, length)
                                                                        : selfExecutable_;
    // A replaced or deleted executable cannot be started at the next login.
    if (::access(path.constData(), X_OK) != 0)
        return std::nullopt;
    return path;
}

} // namespace platform
