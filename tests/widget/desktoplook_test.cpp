// The desktop's look: which icon theme and which colour scheme the program
// takes from what the platform theme, XSETTINGS, settings.ini and the portal
// say, among icon themes installed in a folder of the test's own; and how the
// toolkit settings are read.
#include "app/desktoplook.h"
#include "platform/doubles/fakedesktopsettings.h"
#include "platform/iconthemes.h"
#include "platform/xdgdesktopsettings.h"
#include "platform/xsettings.h"
#include "tests/support/installed.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QIcon>
#include <QTemporaryDir>
#include <QtEndian>
#include <gtest/gtest.h>

namespace {

using platform::ColourScheme;
using platform::ToolkitSettings;

class DesktopLookTest : public ::testing::Test {
protected:
    DesktopLookTest() {
        Theme("Adwaita", "", true);
        Theme("Zeta", "", true);
        Theme("Papirus", "", true);
        Theme("Papirus-Dark", "Papirus", false); // complete through what it inherits
        Theme("Partial", "", false);
        Theme("hicolor", "", true);
        paths = {QStringLiteral(":/icons"), themes.path()};
    }
    ~DesktopLookTest() override {
        QIcon::setThemeSearchPaths(savedPaths);
        QIcon::setThemeName(QString());
        QApplication::setPalette(QPalette());
    }

    // An installed theme, with a folder and a file icon of its own when `complete`.
    void Theme(const char *name, const char *inherits, bool complete) {
        const QString root = themes.filePath(QLatin1String(name));
        QDir().mkpath(root + QStringLiteral("/48/places"));
        QFile index(root + QStringLiteral("/index.theme"));
        ASSERT_TRUE(index.open(QIODevice::WriteOnly));
        index.write(QByteArray("[Icon Theme]\nName=x\nInherits=") + inherits +
                    "\nDirectories=48/places,48/mimetypes\n[48/places]\nSize=48\n");
        index.close();
        QFile(root + QStringLiteral("/48/places/folder.png")).open(QIODevice::WriteOnly);
        if (complete) {
            QDir().mkpath(root + QStringLiteral("/48/mimetypes"));
            QFile(root + QStringLiteral("/48/mimetypes/text-x-generic.svg"))
                .open(QIODevice::WriteOnly);
        }
    }

    QTemporaryDir themes;
    QStringList paths;
    const QStringList savedPaths = QIcon::themeSearchPaths();
};

TEST_F(DesktopLookTest, TheIconThemeIsThePlatformsThenXSettingsThenSettingsIniThenAComplete) {
    const auto dark = ColourScheme::Dark, none = ColourScheme::NoPreference;
    const struct {
        const char *platform, *xsettings, *settingsIni;
        ColourScheme scheme;
        const char *chosen;
    } cases[] = {
        {"", "", "", none, "Adwaita"}, // the desktops' own before others
        {"", "Papirus", "Partial", none, "Papirus"},
        {"", "", "Partial", none, "Partial"}, // named, installed: taken
        {"", "Missing", "Papirus", none, "Papirus"},
        {"Partial", "Papirus", "Zeta", none, "Partial"},
        {"hicolor", "", "", none, "Adwaita"}, // names no look
        {"", "Papirus", "", dark, "Papirus-Dark"},
        {"", "Zeta", "", dark, "Zeta"},
    };
    for (const auto &c : cases) {
        const ToolkitSettings xsettings{QLatin1String(c.xsettings), {}, {}};
        const ToolkitSettings settingsIni{QLatin1String(c.settingsIni), {}, {}};
        EXPECT_EQ(ChooseIconTheme(QLatin1String(c.platform), xsettings, settingsIni, c.scheme, paths),
                  QLatin1String(c.chosen))
            << c.platform << "|" << c.xsettings << "|" << c.settingsIni;
    }
    EXPECT_EQ(platform::CompleteIconThemes(paths),
              QStringLiteral("Adwaita Papirus Papirus-Dark Zeta").split(u' '));
    EXPECT_TRUE(ChooseIconTheme({}, {}, {}, none, {QStringLiteral(":/icons")}).isEmpty())
        << "no theme installed: Qt's own icons";
}

TEST_F(DesktopLookTest, ThePortalDecidesDarkOrLightAndTheToolkitWhereItDoesNot) {
    const ToolkitSettings darkTheme{{}, QStringLiteral("Adwaita-dark"), {}};
    const ToolkitSettings preferDark{{}, QStringLiteral("Adwaita"), true};
    const ToolkitSettings light{{}, QStringLiteral("Adwaita"), false};
    EXPECT_EQ(ChooseColourScheme(ColourScheme::Light, darkTheme, {}), ColourScheme::Light);
    EXPECT_EQ(ChooseColourScheme(ColourScheme::Dark, light, light), ColourScheme::Dark);
    EXPECT_EQ(ChooseColourScheme(ColourScheme::NoPreference, darkTheme, {}), ColourScheme::Dark);
    EXPECT_EQ(ChooseColourScheme({}, {}, preferDark), ColourScheme::Dark);
    EXPECT_EQ(ChooseColourScheme({}, light, preferDark), ColourScheme::NoPreference)
        << "XSETTINGS speaks for the running desktop";
    EXPECT_EQ(ChooseColourScheme({}, {}, {}), ColourScheme::NoPreference);
}

TEST_F(DesktopLookTest, TheLookIsAppliedAndFollowsTheDesktop) {
    QIcon::setThemeSearchPaths(paths);
    Installed<platform::FakeDesktopSettings, platform::DesktopSettings> desktop;
    desktop.fromXSettings.iconTheme = QStringLiteral("Papirus");
    FollowDesktopLook();
    EXPECT_EQ(QIcon::themeName(), QStringLiteral("Papirus"));
    EXPECT_EQ(QIcon::fallbackThemeName(), QStringLiteral("Adwaita"));
    const QColor light = QApplication::palette().color(QPalette::Window);
    ASSERT_GT(light.lightness(), 128);

    desktop.fromXSettings.theme = QStringLiteral("Adwaita-dark");
    desktop.changed();
    EXPECT_EQ(QIcon::themeName(), QStringLiteral("Papirus-Dark"));
    EXPECT_LT(QApplication::palette().color(QPalette::Window).lightness(), 128);
    desktop.fromPortal = ColourScheme::Light;
    desktop.changed();
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), light);
    StopFollowingDesktopLook();
    EXPECT_FALSE(desktop.changed);
}

TEST(ToolkitSettings, SettingsIniOverridesWhatCameBeforeAndXSettingsAreDecoded) {
    QTemporaryDir dir;
    const QString ini = dir.filePath(QStringLiteral("settings.ini"));
    QFile file(ini);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[Settings]\ngtk-icon-theme-name = Papirus\ngtk-application-prefer-dark-theme=1\n");
    file.close();
    const ToolkitSettings read =
        platform::ReadGtkSettingsIni(ini, {QStringLiteral("Adwaita"), QStringLiteral("Arc"), {}});
    EXPECT_EQ(read.iconTheme, QStringLiteral("Papirus"));
    EXPECT_EQ(read.theme, QStringLiteral("Arc")) << "kept from the system's file";
    EXPECT_EQ(read.preferDark, true);
    EXPECT_TRUE(platform::ReadGtkSettingsIni(dir.filePath(QStringLiteral("none"))).iconTheme.isEmpty());

    // Most significant byte first: a string, a colour, an integer, then a cut-off setting.
    auto card = [](QByteArray &out, quint32 value, int bytes) {
        for (int i = bytes - 1; i >= 0; --i)
            out += char((value >> (8 * i)) & 0xFF);
    };
    QByteArray data("\x01\0\0\0", 4);
    card(data, 7, 4);
    card(data, 4, 4);
    data += QByteArray("\x01\0", 2) + QByteArray("\0\x11", 2) + "Net/IconThemeName" +
            QByteArray(3, 0) + QByteArray(4, 0);
    card(data, 7, 4);
    data += "Papirus" + QByteArray(1, 0);
    data += QByteArray("\x02\0\0\x01", 4) + "c" + QByteArray(3, 0) + QByteArray(12, 1);
    data += QByteArray("\0\0\0\x07", 4) + "Xft/DPI" + QByteArray(1, 0) + QByteArray(4, 0);
    card(data, 147456, 4);
    data += QByteArray("\x01\0\0\x05", 4) + "Cut";
    const platform::XSettingsValues values = platform::ParseXSettings(data);
    EXPECT_EQ(values.value("Net/IconThemeName").toString(), QStringLiteral("Papirus"));
    EXPECT_EQ(values.value("Xft/DPI").toInt(), 147456);
    EXPECT_EQ(values.size(), 2);
    EXPECT_TRUE(platform::ParseXSettings("\0\0").isEmpty());
}

} // namespace
