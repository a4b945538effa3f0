// Kestrel Menu: folder menus at the left end of the top bar.

#include "app/lifecycle.h"
#include "app/platformservices.h"
#include "app/singleinstance.h"
#include "foldermenus/menustyle.h"

#include <QApplication>

#include <cstdio>

int main(int argc, char *argv[]) {
    // Checked before anything else so that a second copy touches nothing.
    SingleInstance instance;
    const SingleInstance::Outcome lock = instance.acquire();
    if (lock == SingleInstance::Outcome::HeldByAnother) {
        std::fprintf(stderr, "kestrel-menu: already running for these settings; not starting "
                             "another copy\n");
        return 0;
    }

    // The titles are X11 windows that stand over the top bar; in a Wayland session
    // they run through XWayland unless the user chose a platform explicitly.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb");

    // The program has no options: Qt sees only the program name.
    int qtArgc = 1;
    QApplication application(qtArgc, argv);
    if (argc > 1)
        std::fprintf(stderr, "kestrel-menu: takes no options; ignoring them\n");
    QApplication::setApplicationName(QStringLiteral("kestrel-menu"));
    QApplication::setApplicationDisplayName(QStringLiteral("Kestrel Menu"));
    QApplication::setApplicationVersion(QStringLiteral(KESTREL_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("kestrel-menu"));
    QApplication::setQuitOnLastWindowClosed(false);
    InstallMenuStyle();

    const PlatformServices services;
    if (lock == SingleInstance::Outcome::Failed)
        instance.reportFailure();
    else
        RunKestrelMenu();
    return 0;
}
