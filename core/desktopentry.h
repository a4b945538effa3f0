// Reading and writing freedesktop desktop entries (*.desktop files). GLib's key
// file reader does the reading: groups, escapes, locales and booleans as the
// desktop itself reads them.
#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>

struct _GKeyFile;

class DesktopEntry {
public:
    // The [Desktop Entry] group of a small regular file; nothing when the file
    // cannot be read, is not a key file, or has no such group.
    static std::optional<DesktopEntry> read(const QByteArray &path);
    static std::optional<DesktopEntry> parse(const QByteArray &contents);

    // A value with its escapes (\s \n \t \r \\) decoded; nothing when missing
    // or not UTF-8.
    std::optional<QString> value(const QString &key) const;
    // A localestring for `locale` (lang_COUNTRY.ENCODING@MODIFIER), falling back
    // as the format says down to the plain key.
    std::optional<QString> localizedValue(const QString &key, const QString &locale) const;
    bool boolValue(const QString &key, bool fallback) const;

    // Whether the desktop should leave this entry out (Hidden, or disabled for
    // autostart by the common key).
    bool isDisabled() const;
    // Whether it starts an application or opens an address (Type Application
    // or Link), rather than describing a folder or nothing at all.
    bool isLauncher() const;
    // Whether a launcher of this desktop would offer it: not hidden, shown in
    // `desktops` (XDG_CURRENT_DESKTOP: names separated by ':') by OnlyShowIn and
    // NotShowIn, and with its TryExec program installed.
    bool isShownIn(const QByteArray &desktops) const;

    // The program of the Exec key, quoting undone as the desktop undoes it;
    // nothing when there is none.
    std::optional<QByteArray> execProgram() const;

private:
    std::shared_ptr<_GKeyFile> file_;
};

// An Exec argument quoted as the format requires; nothing for text that no
// Exec line can carry (line breaks and other control characters).
std::optional<QByteArray> QuoteExecArgument(const QByteArray &argument);
// Escapes a value for writing (backslash and line breaks).
QByteArray EscapeDesktopValue(const QByteArray &value);
