// Reading and writing freedesktop desktop entries (*.desktop files).
#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <optional>

class DesktopEntry {
public:
    // The keys of the [Desktop Entry] group; nothing when the file cannot be read
    // or has no such group.
    static std::optional<DesktopEntry> read(const QByteArray &path);
    static DesktopEntry parse(const QByteArray &contents, bool *hasMainGroup = nullptr);

    // A value with the string escapes (\s \n \t \r \\) decoded.
    std::optional<QString> value(const QString &key) const;
    // A localestring: Name[de_DE], Name[de], ..., then Name.
    std::optional<QString> localizedValue(const QString &key, const QString &locale) const;
    bool boolValue(const QString &key, bool fallback) const;

    // Whether the desktop should leave this entry out (Hidden, or disabled for
    // autostart by the common key).
    bool isDisabled() const;

    // The program of the Exec key, quoting undone; nothing when there is none.
    std::optional<QByteArray> execProgram() const;

private:
    QHash<QString, QString> values_; // raw, still escaped
};

// Splits an Exec value (string escapes already decoded) into its arguments.
std::optional<QList<QByteArray>> SplitExecLine(const QByteArray &exec);
// An Exec argument quoted as the format requires; nothing for text that no
// Exec line can carry (line breaks and other control characters).
std::optional<QByteArray> QuoteExecArgument(const QByteArray &argument);
// Escapes a value for writing (backslash and line breaks).
QByteArray EscapeDesktopValue(const QByteArray &value);
