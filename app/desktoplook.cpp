#include "app/desktoplook.h"

#include "foldermenus/foldercache.h"
#include "foldermenus/menuicons.h"
#include "platform/iconthemes.h"
#include "platform/service.h"
#include "titles/titleevents.h"

#include <QApplication>
#include <QIcon>
#include <QLoggingCategory>
#include <QStyle>

Q_LOGGING_CATEGORY(lcLook, "kestrel.look", QtWarningMsg)

namespace {

using platform::ColourScheme;

// hicolor holds what applications install, not a look: it names no choice.
bool Names(const QString &theme) {
    return !theme.isEmpty() && theme != QLatin1String("hicolor");
}

bool DarkTheme(const platform::ToolkitSettings &settings) {
    return settings.preferDark.value_or(false) ||
           settings.theme.endsWith(QLatin1String("-dark"), Qt::CaseInsensitive) ||
           settings.theme.endsWith(QLatin1String("_dark"), Qt::CaseInsensitive);
}

bool IsDark(const QPalette &palette) {
    return palette.color(QPalette::Window).lightness() < 128;
}

QString appliedIconTheme;
std::optional<ColourScheme> appliedScheme;

} // namespace

QString ChooseIconTheme(const QString &platformTheme, const platform::ToolkitSettings &xsettings,
                        const platform::ToolkitSettings &settingsIni, bool dark,
                        const QStringList &searchPaths) {
    QString chosen;
    for (const QString &named : {platformTheme, xsettings.iconTheme, settingsIni.iconTheme}) {
        if (Names(named) && platform::IsInstalledIconTheme(named, searchPaths)) {
            chosen = named;
            break;
        }
    }
    if (chosen.isEmpty())
        chosen = platform::FirstCompleteIconTheme(searchPaths);
    // Monochrome icons drawn for a light background vanish on a dark one.
    if (dark && !chosen.endsWith(QLatin1String("-dark"), Qt::CaseInsensitive))
        for (const QString &dark :
             {chosen + QLatin1String("-dark"), chosen + QLatin1String("-Dark")})
            if (platform::IsInstalledIconTheme(dark, searchPaths))
                return dark;
    return chosen;
}

ColourScheme ChooseColourScheme(std::optional<ColourScheme> portal,
                                const platform::ToolkitSettings &xsettings,
                                const platform::ToolkitSettings &settingsIni) {
    if (portal && *portal != ColourScheme::NoPreference)
        return *portal;
    // XSETTINGS speaks for the running desktop; settings.ini only where it is silent.
    const platform::ToolkitSettings &toolkit =
        xsettings.theme.isEmpty() && !xsettings.preferDark ? settingsIni : xsettings;
    return DarkTheme(toolkit) ? ColourScheme::Dark : ColourScheme::NoPreference;
}

QPalette DarkPalette(const QPalette &light) {
    QPalette dark(QColor(0x35, 0x35, 0x35));
    const QColor text(0xee, 0xee, 0xec);
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        dark.setColor(role, text);
    dark.setColor(QPalette::Base, QColor(0x2a, 0x2a, 0x2a));
    dark.setColor(QPalette::AlternateBase, QColor(0x32, 0x32, 0x32));
    dark.setColor(QPalette::ToolTipBase, QColor(0x2a, 0x2a, 0x2a));
    dark.setColor(QPalette::Button, QColor(0x3a, 0x3a, 0x3a));
    dark.setColor(QPalette::PlaceholderText, QColor(0x8d, 0x8d, 0x8d));
    dark.setColor(QPalette::Highlight, light.color(QPalette::Active, QPalette::Highlight));
    dark.setColor(QPalette::HighlightedText, Qt::white);
    dark.setColor(QPalette::Link, QColor(0x62, 0xa0, 0xea));
    dark.setColor(QPalette::LinkVisited, QColor(0xc0, 0x61, 0xcb));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        dark.setColor(QPalette::Disabled, role, QColor(0x80, 0x80, 0x80));
    return dark;
}

void ApplyDesktopLook() {
    platform::DesktopSettings &desktop = platform::service<platform::DesktopSettings>();
    const platform::ToolkitSettings xsettings = desktop.xsettings();
    const platform::ToolkitSettings settingsIni = desktop.settingsIni();

    // What the platform theme names, with no name of ours in the way.
    const bool platformKnows = platform::PlatformThemeKnowsIcons();
    QIcon::setThemeName(QString());
    const QString platformTheme = platformKnows ? QIcon::themeName() : QString();
    const QStringList searchPaths = QIcon::themeSearchPaths();
    const ColourScheme scheme =
        ChooseColourScheme(desktop.portalColourScheme(), xsettings, settingsIni);
    if (scheme != appliedScheme) {
        // The platform theme's own palette first; a dark one of ours where the
        // desktop prefers dark and that palette is light.
        QApplication::setPalette(QPalette());
        const QPalette desktopPalette = QApplication::palette();
        if (scheme == ColourScheme::Dark && !IsDark(desktopPalette))
            QApplication::setPalette(DarkPalette(desktopPalette));
        else if (scheme == ColourScheme::Light && IsDark(desktopPalette))
            QApplication::setPalette(QApplication::style()->standardPalette());
    }

    // Dark by preference or by the desktop's own palette (a dark colour scheme
    // of the platform theme, with no preference said anywhere else).
    const QString iconTheme = ChooseIconTheme(platformTheme, xsettings, settingsIni,
                                              IsDark(QApplication::palette()), searchPaths);
    QIcon::setThemeName(iconTheme);
    // Icons a chosen theme lacks come from a complete one.
    const QString fallback = platform::FirstCompleteIconTheme(searchPaths, iconTheme);
    QIcon::setFallbackThemeName(fallback.isEmpty() ? QStringLiteral("hicolor") : fallback);

    if (iconTheme == appliedIconTheme && scheme == appliedScheme)
        return;
    qCInfo(lcLook, "icon theme \"%s\", colour scheme %s", qPrintable(iconTheme),
           scheme == ColourScheme::Dark    ? "dark"
           : scheme == ColourScheme::Light ? "light"
                                           : "as the desktop's palette");
    const bool first = !appliedScheme;
    appliedIconTheme = iconTheme;
    appliedScheme = scheme;
    if (first)
        return;
    // Menus and titles drawn before the change are drawn again.
    ClearFolderIconCache();
    DestroyFolderCachedMenu(nullptr);
    InvalidateReadyMenus();
}

void FollowDesktopLook() {
    ApplyDesktopLook();
    platform::service<platform::DesktopSettings>().setChangedHandler(ApplyDesktopLook);
}

void StopFollowingDesktopLook() {
    platform::service<platform::DesktopSettings>().setChangedHandler(nullptr);
    appliedIconTheme.clear();
    appliedScheme.reset();
}
