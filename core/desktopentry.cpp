#include "core/desktopentry.h"

#include "core/safefile.h"

namespace {

QString Unescape(const QString &raw) {
    QString out;
    out.reserve(raw.size());
    for (qsizetype i = 0; i < raw.size(); ++i) {
        if (raw[i] != u'\\' || i + 1 == raw.size()) {
            out += raw[i];
            continue;
        }
        const QChar next = raw[++i];
        if (next == u's')
            out += u' ';
        else if (next == u'n')
            out += u'\n';
        else if (next == u't')
            out += u'\t';
        else if (next == u'r')
            out += u'\r';
        else if (next == u'\\')
            out += u'\\';
        else {
            out += u'\\';
            out += next;
        }
    }
    return out;
}

bool IsReservedInExec(char c) {
    return QByteArrayView(" \t\n\"'\\><~|&;$*?#()`").contains(c);
}

} // namespace

std::optional<DesktopEntry> DesktopEntry::read(const QByteArray &path) {
    // Desktop entries are small regular files; anything else is no desktop
    // entry, and a pipe in its place must not hold the program up.
    QByteArray contents;
    if (ReadRegularFile(path, kSmallFileLimit, &contents) != noErr)
        return std::nullopt;
    bool hasMainGroup = false;
    DesktopEntry entry = parse(contents, &hasMainGroup);
    if (!hasMainGroup)
        return std::nullopt;
    return entry;
}

DesktopEntry DesktopEntry::parse(const QByteArray &contents, bool *hasMainGroup) {
    DesktopEntry entry;
    bool inMainGroup = false;
    bool sawMainGroup = false;
    for (const QByteArray &rawLine : contents.split('\n')) {
        const QString line = QString::fromUtf8(rawLine).trimmed();
        if (line.isEmpty() || line.startsWith(u'#'))
            continue;
        if (line.startsWith(u'[')) {
            inMainGroup = line == QLatin1String("[Desktop Entry]");
            sawMainGroup = sawMainGroup || inMainGroup;
            continue;
        }
        if (!inMainGroup)
            continue;
        const qsizetype equals = line.indexOf(u'=');
        if (equals <= 0)
            continue;
        const QString key = line.left(equals).trimmed();
        // The first occurrence of a key counts.
        if (!entry.values_.contains(key))
            entry.values_.insert(key, line.mid(equals + 1).trimmed());
    }
    if (hasMainGroup != nullptr)
        *hasMainGroup = sawMainGroup;
    return entry;
}

std::optional<QString> DesktopEntry::value(const QString &key) const {
    const auto found = values_.constFind(key);
    if (found == values_.constEnd())
        return std::nullopt;
    return Unescape(*found);
}

std::optional<QString> DesktopEntry::localizedValue(const QString &key,
                                                    const QString &locale) const {
    // lang_COUNTRY@MODIFIER, lang_COUNTRY, lang@MODIFIER, lang, then the plain key.
    QString rest = locale.section(u'.', 0, 0); // the encoding plays no part
    const QString modifier = rest.contains(u'@') ? rest.section(u'@', 1) : QString();
    rest = rest.section(u'@', 0, 0);
    const QString language = rest.section(u'_', 0, 0);
    const QString country = rest.contains(u'_') ? rest.section(u'_', 1) : QString();
    QStringList candidates;
    if (!country.isEmpty() && !modifier.isEmpty())
        candidates << language + u'_' + country + u'@' + modifier;
    if (!country.isEmpty())
        candidates << language + u'_' + country;
    if (!modifier.isEmpty())
        candidates << language + u'@' + modifier;
    if (!language.isEmpty())
        candidates << language;
    for (const QString &candidate : candidates) {
        if (auto found = value(key + u'[' + candidate + u']'))
            return found;
    }
    return value(key);
}

bool DesktopEntry::boolValue(const QString &key, bool fallback) const {
    const auto found = value(key);
    if (!found)
        return fallback;
    if (*found == QLatin1String("true"))
        return true;
    if (*found == QLatin1String("false"))
        return false;
    return fallback;
}

bool DesktopEntry::isDisabled() const {
    return boolValue(QStringLiteral("Hidden"), false) ||
           !boolValue(QStringLiteral("X-GNOME-Autostart-enabled"), true);
}

std::optional<QByteArray> DesktopEntry::execProgram() const {
    const auto exec = value(QStringLiteral("Exec"));
    if (!exec)
        return std::nullopt;
    const auto arguments = SplitExecLine(exec->toUtf8());
    if (!arguments || arguments->isEmpty() || arguments->first().isEmpty())
        return std::nullopt;
    // "%%" is a literal percent sign; the program name holds no other field code.
    QByteArray program = arguments->first();
    return program.replace("%%", "%");
}

std::optional<QList<QByteArray>> SplitExecLine(const QByteArray &exec) {
    QList<QByteArray> arguments;
    QByteArray current;
    bool inArgument = false;
    for (qsizetype i = 0; i < exec.size(); ++i) {
        const char c = exec[i];
        if (c == '"') {
            inArgument = true;
            for (++i;; ++i) {
                if (i >= exec.size())
                    return std::nullopt; // unterminated quote
                if (exec[i] == '"')
                    break;
                if (exec[i] == '\\' && i + 1 < exec.size() &&
                    QByteArrayView("\"`$\\").contains(exec[i + 1]))
                    ++i;
                current += exec[i];
            }
        } else if (c == ' ' || c == '\t') {
            if (inArgument)
                arguments.append(std::exchange(current, {}));
            inArgument = false;
        } else {
            inArgument = true;
            current += c;
        }
    }
    if (inArgument)
        arguments.append(current);
    return arguments;
}

std::optional<QByteArray> QuoteExecArgument(const QByteArray &argument) {
    bool needsQuotes = argument.isEmpty();
    for (const char c : argument) {
        if (static_cast<unsigned char>(c) < 0x20 && c != '\t')
            return std::nullopt;
        needsQuotes = needsQuotes || IsReservedInExec(c);
    }
    QByteArray out;
    for (const char c : argument) {
        if (c == '%')
            out += "%%"; // a literal percent sign, not a field code
        else if (needsQuotes && QByteArrayView("\"`$\\").contains(c))
            out += QByteArray("\\") + c;
        else
            out += c;
    }
    return needsQuotes ? '"' + out + '"' : out;
}

QByteArray EscapeDesktopValue(const QByteArray &value) {
    QByteArray out;
    for (const char c : value) {
        if (c == '\\')
            out += "\\\\";
        else if (c == '\n')
            out += "\\n";
        else if (c == '\r')
            out += "\\r";
        else
            out += c;
    }
    return out;
}
