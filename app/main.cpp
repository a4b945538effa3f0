// Kestrel Menu: folder menus at the left end of the top bar.

#include "app/desktoplook.h"
#include "app/lifecycle.h"
#include "app/platformservices.h"
#include "app/singleinstance.h"
#include "foldermenus/menustyle.h"
#include "platform/programbus.h"

#include <QApplication>
#include <QCoreApplication>
#include <QFileInfo>
#include <QIcon>
#include <QLibraryInfo>

#include <cstdio>

namespace {

// The file dialogs go through the XDG desktop portal where Qt's portal theme is
// installed: it hands dialogs to the desktop's own chooser when a portal runs,
// and everything else to the theme Qt would have chosen anyway.
void UsePortalDialogs() {
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORMTHEME"))
        return; // the user's choice
    const QString plugin = QLibraryInfo::path(QLibraryInfo::PluginsPath) +
                           QStringLiteral("/platformthemes/libqxdgdesktopportal.so");
    if (QFileInfo::exists(plugin))
        qputenv("QT_QPA_PLATFORMTHEME", "xdgdesktopportal");
}

} // namespace

int main(int argc, char *argv[]) {
    // Checked before anything else so that a second copy touches nothing.
    SingleInstance instance;
    const SingleInstance::Outcome lock = instance.acquire();
    if (lock == SingleInstance::Outcome::HeldByAnother) {
        // Started again, as a desktop's shortcut may start it: the copy that
        // runs pops its menu up instead.
        int coreArgc = 1;
        const QCoreApplication core(coreArgc, argv);
        constexpr int kWaitForRunningCopyMs = 5000;
        if (const OSErr err = platform::AskRunningCopyToPopUpMenu(kWaitForRunningCopyMs);
            err != noErr)
            std::fprintf(stderr,
                         "kestrel-menu: already running for these settings, but it did not "
                         "answer on the session bus (error %d)\n",
                         int(err));
        else
            std::fprintf(stderr, "kestrel-menu: already running for these settings; its menu "
                                 "pops up\n");
        return 0;
    }

    // The titles are X11 windows that stand over the top bar; in a Wayland session
    // they run through XWayland unless the user chose a platform explicitly.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    UsePortalDialogs();

    // The program has no options: Qt sees only the program name.
    int qtArgc = 1;
    QApplication application(qtArgc, argv);
    if (argc > 1)
        std::fprintf(stderr, "kestrel-menu: takes no options; ignoring them\n");
    // No display name: Qt would add it to every window title ("… — Kestrel Menu"),
    // and the windows already say whose they are.
    QApplication::setApplicationName(QStringLiteral("kestrel-menu"));
    QApplication::setApplicationVersion(QStringLiteral(KESTREL_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("kestrel-menu"));
    QApplication::setWindowIcon(QIcon::fromTheme(
        QStringLiteral("kestrel-menu"), QIcon(QStringLiteral(":/images/kestrel-menu.svg"))));
    QApplication::setQuitOnLastWindowClosed(false);
    InstallMenuStyle();

    const PlatformServices services;
    if (lock == SingleInstance::Outcome::Failed) {
        instance.reportFailure();
        return 0;
    }
    // Icons, palette, light or dark: the desktop's, from the start and as they change.
    FollowDesktopLook();
    RunKestrelMenu();
    StopFollowingDesktopLook();
    return 0;
}
