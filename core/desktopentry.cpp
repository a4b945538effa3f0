#include "core/desktopentry.h"

#include "core/safefile.h"

#include <QList>

#include <glib.h>

namespace {

constexpr const char *kMainGroup = "Desktop Entry";

struct GFreeDeleter {
    void operator()(gpointer data) const { g_free(data); }
};
using GCharPtr = std::unique_ptr<gchar, GFreeDeleter>;
struct GStrvDeleter {
    void operator()(gchar **strings) const { g_strfreev(strings); }
};
using GStrvPtr = std::unique_ptr<gchar *, GStrvDeleter>;

bool IsReservedInExec(char c) {
    return QByteArrayView(" \t\n\"'\\><~|&;$*?#()`").contains(c);
}

// Whether any of `names` is among the ':'-separated `desktops`.
bool NamesDesktop(gchar **names, const QByteArray &desktops) {
    const QList<QByteArray> listed = desktops.split(':');
    for (gchar **name = names; name != nullptr && *name != nullptr; ++name) {
        if (listed.contains(QByteArray(*name)))
            return true;
    }
    return false;
}

// Whether the raw value of `key` ends in a lone "\\". GLib refuses such a value
// but warns on standard error each time it reads one, as a bug of its caller.
bool EndsInLoneEscape(GKeyFile *file, const char *key) {
    const GCharPtr raw(g_key_file_get_value(file, kMainGroup, key, nullptr));
    if (!raw)
        return false;
    const std::string_view text(raw.get());
    const auto last = text.find_last_not_of('\\');
    const std::size_t escapes = text.size() - (last == std::string_view::npos ? 0 : last + 1);
    return escapes % 2 == 1;
}

GCharPtr StringValue(GKeyFile *file, const char *key) {
    if (EndsInLoneEscape(file, key))
        return nullptr;
    return GCharPtr(g_key_file_get_string(file, kMainGroup, key, nullptr));
}

GStrvPtr StringList(GKeyFile *file, const char *key) {
    if (EndsInLoneEscape(file, key))
        return nullptr;
    return GStrvPtr(g_key_file_get_string_list(file, kMainGroup, key, nullptr, nullptr));
}

} // namespace

std::optional<DesktopEntry> DesktopEntry::read(const QByteArray &path) {
    // Desktop entries are small regular files; anything else is no desktop
    // entry, and a pipe in its place must not hold the program up.
    QByteArray contents;
    if (ReadRegularFile(path, kSmallFileLimit, &contents) != noErr)
        return std::nullopt;
    return parse(contents);
}

std::optional<DesktopEntry> DesktopEntry::parse(const QByteArray &contents) {
    DesktopEntry entry;
    entry.file_.reset(g_key_file_new(), g_key_file_free);
    if (!g_key_file_load_from_data(entry.file_.get(), contents.constData(), gsize(contents.size()),
                                   G_KEY_FILE_KEEP_TRANSLATIONS, nullptr) ||
        !g_key_file_has_group(entry.file_.get(), kMainGroup))
        return std::nullopt;
    return entry;
}

std::optional<QString> DesktopEntry::value(const QString &key) const {
    const GCharPtr text = StringValue(file_.get(), key.toUtf8().constData());
    if (!text)
        return std::nullopt;
    return QString::fromUtf8(text.get());
}

std::optional<QString> DesktopEntry::localizedValue(const QString &key,
                                                    const QString &locale) const {
    // The fallback of g_key_file_get_locale_string, done here: GLib's own leaks
    // the error of a plain value it reads with an unknown escape (\q).
    const GStrvPtr variants(g_get_locale_variants(locale.toUtf8().constData()));
    for (gchar **variant = variants.get(); *variant != nullptr; ++variant) {
        if (auto text = value(key + u'[' + QString::fromUtf8(*variant) + u']'))
            return text;
    }
    return value(key);
}

bool DesktopEntry::boolValue(const QString &key, bool fallback) const {
    GError *error = nullptr;
    const gboolean found =
        g_key_file_get_boolean(file_.get(), kMainGroup, key.toUtf8().constData(), &error);
    if (error != nullptr) {
        g_error_free(error);
        return fallback;
    }
    return found != FALSE;
}

bool DesktopEntry::isDisabled() const {
    return boolValue(QStringLiteral("Hidden"), false) ||
           !boolValue(QStringLiteral("X-GNOME-Autostart-enabled"), true);
}

bool DesktopEntry::isLauncher() const {
    const std::optional<QString> type = value(QStringLiteral("Type"));
    return type == QLatin1String("Application") || type == QLatin1String("Link");
}

bool DesktopEntry::isShownIn(const QByteArray &desktops) const {
    if (boolValue(QStringLiteral("Hidden"), false))
        return false;
    const GStrvPtr only = StringList(file_.get(), "OnlyShowIn");
    if (only && !NamesDesktop(only.get(), desktops))
        return false;
    const GStrvPtr notIn = StringList(file_.get(), "NotShowIn");
    if (notIn && NamesDesktop(notIn.get(), desktops))
        return false;
    const GCharPtr tryExec = StringValue(file_.get(), "TryExec");
    if (!tryExec)
        return true;
    const GCharPtr found(g_find_program_in_path(tryExec.get()));
    return found != nullptr;
}

std::optional<QByteArray> DesktopEntry::execProgram() const {
    const GCharPtr exec = StringValue(file_.get(), "Exec");
    if (!exec)
        return std::nullopt;
    gchar **argv = nullptr;
    if (!g_shell_parse_argv(exec.get(), nullptr, &argv, nullptr))
        return std::nullopt;
    const GStrvPtr arguments(argv);
    QByteArray program(arguments.get()[0]);
    if (program.isEmpty())
        return std::nullopt;
    // "%%" is a literal percent sign; the program name holds no other field code.
    return program.replace("%%", "%");
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
