#include "platform/xdgdesktopsettings.h"

#include "platform/settingsportal.h"
#include "platform/xsettings.h"

#include <glib.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTimer>

namespace platform {

namespace {

// settings.ini lives in gtk-3.0 under each configuration folder, the user's first.
QStringList SettingsIniPaths() {
    QStringList paths;
    for (const QString &folder :
         QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation))
        paths.append(folder + QStringLiteral("/gtk-3.0/settings.ini"));
    return paths;
}

} // namespace

ToolkitSettings ReadGtkSettingsIni(const QString &path, ToolkitSettings base) {
    GKeyFile *file = g_key_file_new();
    if (g_key_file_load_from_file(file, QFile::encodeName(path).constData(), G_KEY_FILE_NONE,
                                  nullptr)) {
        auto text = [file](const char *key, QString &into) {
            if (gchar *value = g_key_file_get_string(file, "Settings", key, nullptr)) {
                into = QString::fromUtf8(value).trimmed();
                g_free(value);
            }
        };
        text("gtk-icon-theme-name", base.iconTheme);
        text("gtk-theme-name", base.theme);
        GError *error = nullptr;
        const gboolean dark =
            g_key_file_get_boolean(file, "Settings", "gtk-application-prefer-dark-theme", &error);
        if (error == nullptr)
            base.preferDark = dark != FALSE;
        g_clear_error(&error);
    }
    g_key_file_free(file);
    return base;
}

XdgDesktopSettings::XdgDesktopSettings()
    : xsettings_(std::make_unique<XSettingsWatch>([this] { changed(); })),
      portal_(std::make_unique<SettingsPortal>([this] { changed(); })) {
    // The folders, not only the files: editors and settings tools replace the
    // file, and it may not exist yet.
    const auto reread = [this] {
        readSettingsIni();
        changed();
    };
    QObject::connect(&iniWatch_, &QFileSystemWatcher::directoryChanged, reread);
    QObject::connect(&iniWatch_, &QFileSystemWatcher::fileChanged, reread);
    readSettingsIni();
}

XdgDesktopSettings::~XdgDesktopSettings() = default;

void XdgDesktopSettings::readSettingsIni() {
    ToolkitSettings settings;
    const QStringList paths = SettingsIniPaths();
    // The system's first, so that the user's file has the last word.
    for (auto path = paths.crbegin(); path != paths.crend(); ++path)
        settings = ReadGtkSettingsIni(*path, settings);
    ini_ = settings;

    // The user's gtk-3.0 folder once there is one, else the folder it would be made in.
    const QString user = paths.value(0);
    const QString folder = QFileInfo(user).path();
    QStringList wanted{QFileInfo::exists(folder) ? folder : QFileInfo(folder).path()};
    if (QFileInfo::exists(user))
        wanted.append(user);
    const QStringList watched = iniWatch_.files() + iniWatch_.directories();
    for (const QString &path : watched)
        if (!wanted.contains(path))
            iniWatch_.removePath(path);
    for (const QString &path : wanted)
        if (!watched.contains(path))
            iniWatch_.addPath(path);
}

void XdgDesktopSettings::changed() {
    // Several sources often change together: one call for all of them.
    if (changePending_ || !changed_)
        return;
    changePending_ = true;
    QTimer::singleShot(0, portal_.get(), [this] {
        changePending_ = false;
        if (changed_)
            changed_();
    });
}

ToolkitSettings XdgDesktopSettings::xsettings() {
    const XSettingsValues &values = xsettings_->values();
    ToolkitSettings settings;
    settings.iconTheme = values.value("Net/IconThemeName").toString();
    settings.theme = values.value("Net/ThemeName").toString();
    return settings;
}

ToolkitSettings XdgDesktopSettings::settingsIni() {
    return ini_;
}

std::optional<ColourScheme> XdgDesktopSettings::portalColourScheme() {
    return portal_->colourScheme();
}

void XdgDesktopSettings::setChangedHandler(std::function<void()> changed) {
    changed_ = std::move(changed);
}

} // namespace platform
