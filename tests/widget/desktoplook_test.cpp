// The desktop's look: which icon theme and which colour scheme the program
// takes from what the platform theme, XSETTINGS, settings.ini and the portal
// say, among icon themes installed in a folder of the test's own.
#include "app/desktoplook.h"
#include "platform/doubles/fakedesktopsettings.h"
#include "platform/iconthemes.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"

#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QTemporaryDir>
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
        const QByteArray root = QFile::encodeName(themes.path()) + '/' + name;
        WriteFile(root + "/index.theme", QByteArray("[Icon Theme]\nInherits=") + inherits +
                                             "\nDirectories=48/places,48/mimetypes\n");
        WriteFile(root + "/48/places/folder.png", {});
        if (complete)
            WriteFile(root + "/48/mimetypes/text-x-generic.svg", {});
    }

    QTemporaryDir themes;
    QStringList paths;
    const QStringList savedPaths = QIcon::themeSearchPaths();
};

TEST_F(DesktopLookTest, TheIconThemeIsThePlatformsThenXSettingsThenSettingsIniThenAComplete) {
    const bool dark = true, none = false;
    const struct {
        const char *platform, *xsettings, *settingsIni;
        bool dark;
        const char *chosen;
    } cases[] = {
        {"", "", "", none, "Adwaita"}, // the desktops' own before others
        {"", "Papirus", "Partial", none, "Papirus"},
        {"", "", "Partial", none, "Partial"}, // named, installed: taken
        {"", "Missing", "Papirus", none, "Papirus"},
        {"Partial", "Papirus", "Zeta", none, "Partial"},
        {"hicolor", "", "", none, "Adwaita"}, // names no look
        {"", "Papirus", "", dark, "Papirus-Dark"},
    };
    for (const auto &c : cases) {
        const ToolkitSettings xsettings{QLatin1String(c.xsettings), {}, {}};
        const ToolkitSettings settingsIni{QLatin1String(c.settingsIni), {}, {}};
        EXPECT_EQ(ChooseIconTheme(QLatin1String(c.platform), xsettings, settingsIni, c.dark, paths),
                  QLatin1String(c.chosen))
            << c.platform << "|" << c.xsettings << "|" << c.settingsIni;
    }
    EXPECT_TRUE(ChooseIconTheme({}, {}, {}, none, {QStringLiteral(":/icons")}).isEmpty())
        << "no theme installed: Qt's own icons";
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

} // namespace
