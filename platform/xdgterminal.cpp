#include "platform/gioobjects.h"

#include "platform/xdgterminal.h"

#include "core/desktopentry.h"
#include "core/folders.h"
#include "core/safefile.h"
#include "platform/gioerror.h"

#include <QLoggingCategory>

#include <vector>

Q_LOGGING_CATEGORY(lcTerminal, "kestrel.terminal", QtWarningMsg)

namespace platform {

namespace {

// A command line split into its words as the desktop's settings mean it (no
// shell sees it), its program found on the search path; empty when the
// program is not installed.
QList<QByteArray> InstalledCommand(const QByteArray &line) {
    gchar **words = nullptr;
    gint count = 0;
    if (line.trimmed().isEmpty() || !g_shell_parse_argv(line.constData(), &count, &words, nullptr))
        return {};
    QList<QByteArray> command;
    if (gchar *program = g_find_program_in_path(words[0])) {
        command.append(program);
        g_free(program);
        for (gint i = 1; i < count; ++i)
            command.append(words[i]);
    }
    g_strfreev(words);
    return command;
}

// A string of a GSettings schema, when that schema is installed.
QByteArray SettingsString(const char *schemaId, const char *key) {
    GSettingsSchemaSource *source = g_settings_schema_source_get_default();
    GSettingsSchema *schema =
        source != nullptr ? g_settings_schema_source_lookup(source, schemaId, TRUE) : nullptr;
    if (schema == nullptr)
        return {};
    QByteArray value;
    if (g_settings_schema_has_key(schema, key)) {
        GObjectPtr<GSettings> settings(g_settings_new_full(schema, nullptr, nullptr));
        gchar *text = g_settings_get_string(settings.get(), key);
        value = text;
        g_free(text);
    }
    g_settings_schema_unref(schema);
    return value;
}

// `key` in `group` of a small settings file of the INI kind (the lines before
// any group when `group` is empty); KDE's markers after a key ("key[$e]") are
// allowed. Empty when it is not there.
QByteArray IniValue(const QByteArray &path, const QByteArray &group, const QByteArray &key) {
    QByteArray contents;
    if (ReadRegularFile(path, kSmallFileLimit, &contents) != noErr)
        return {};
    QByteArray current;
    for (QByteArray line : contents.split('\n')) {
        line = line.trimmed();
        if (line.startsWith('[') && line.endsWith(']')) {
            current = line.mid(1, line.size() - 2);
            continue;
        }
        const qsizetype equals = line.indexOf('=');
        QByteArray name = line.left(equals).trimmed();
        if (const qsizetype marker = name.indexOf("[$"); marker > 0)
            name.truncate(marker);
        if (equals > 0 && current == group && name == key)
            return line.mid(equals + 1).trimmed();
    }
    return {};
}

// The first value of `key` found in the user's configuration folder, then
// the system's.
QByteArray ConfigValue(const char *file, const QByteArray &group, const QByteArray &key) {
    std::vector<QByteArray> folders{g_get_user_config_dir()};
    for (const gchar *const *dir = g_get_system_config_dirs(); *dir != nullptr; ++dir)
        folders.emplace_back(*dir);
    for (const QByteArray &folder : folders) {
        if (const QByteArray value = IniValue(JoinPath(folder, file), group, key); !value.isEmpty())
            return value;
    }
    return {};
}

// Xfce names its preferred terminal by a helper, a desktop entry that lists
// the programs it may be.
QList<QByteArray> XfceTerminal() {
    const QByteArray helper = ConfigValue("xfce4/helpers.rc", {}, "TerminalEmulator");
    if (helper.isEmpty() || helper.contains('/'))
        return {};
    std::vector<QByteArray> folders{g_get_user_data_dir()};
    for (const gchar *const *dir = g_get_system_data_dirs(); *dir != nullptr; ++dir)
        folders.emplace_back(*dir);
    for (const QByteArray &folder : folders) {
        const auto entry =
            DesktopEntry::read(JoinPath(folder, "xfce4/helpers/" + helper + ".desktop"));
        if (!entry)
            continue;
        for (const char *key : {"X-XFCE-Binaries", "X-XFCE-Commands"}) {
            const QString programs = entry->value(QLatin1String(key)).value_or(QString());
            for (const QString &program : programs.split(u';', Qt::SkipEmptyParts)) {
                if (QList<QByteArray> command = InstalledCommand(program.toUtf8());
                    !command.isEmpty())
                    return command;
            }
        }
    }
    return {};
}

// The terminal the settings of the desktop in use name, if it is installed.
QList<QByteArray> DesktopTerminal() {
    struct Schema {
        const char *desktop;
        const char *schema;
    };
    static constexpr Schema kSchemas[] = {
        {"GNOME", "org.gnome.desktop.default-applications.terminal"},
        {"Unity", "org.gnome.desktop.default-applications.terminal"},
        {"Budgie", "org.gnome.desktop.default-applications.terminal"},
        {"X-Cinnamon", "org.cinnamon.desktop.default-applications.terminal"},
        {"MATE", "org.mate.applications-terminal"},
    };
    for (const QByteArray &desktop : qgetenv("XDG_CURRENT_DESKTOP").split(':')) {
        QList<QByteArray> command;
        if (desktop == "KDE")
            command = InstalledCommand(ConfigValue("kdeglobals", "General", "TerminalApplication"));
        else if (desktop == "XFCE")
            command = XfceTerminal();
        for (const Schema &known : kSchemas) {
            if (command.isEmpty() && desktop == known.desktop)
                command = InstalledCommand(SettingsString(known.schema, "exec"));
        }
        if (!command.isEmpty())
            return command;
    }
    return {};
}

} // namespace

QList<QByteArray> XdgTerminal::command() {
    if (QList<QByteArray> command = InstalledCommand("xdg-terminal-exec"); !command.isEmpty())
        return command;
    if (QList<QByteArray> command = DesktopTerminal(); !command.isEmpty())
        return command;
    return InstalledCommand("x-terminal-emulator");
}

OSErr XdgTerminal::openIn(const QByteArray &folder) {
    QList<QByteArray> command = XdgTerminal::command();
    if (command.isEmpty()) {
        qCWarning(lcTerminal, "no terminal program is installed");
        return kLSApplicationNotFoundErr;
    }
    qCInfo(lcTerminal, "opening %s in %s", command.first().constData(), folder.constData());
    std::vector<char *> argv;
    for (QByteArray &word : command)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    // The shell in the terminal keeps the folder's name as the user knows it.
    gchar **environment = g_environ_setenv(LaunchEnvironment(), "PWD", folder.constData(), TRUE);
    GError *error = nullptr;
    const gboolean spawned = g_spawn_async(folder.constData(), argv.data(), environment,
                                           G_SPAWN_DEFAULT, nullptr, nullptr, nullptr, &error);
    g_strfreev(environment);
    if (spawned)
        return noErr;
    qCWarning(lcTerminal, "the terminal did not start: %s", error->message);
    return TakeGioError(error);
}

} // namespace platform
