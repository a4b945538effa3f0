#include "app/lifecycle.h"

#include "core/errors.h"
#include "core/eventloop.h"
#include "finder/finderevents.h"
#include "foldermenus/foldercache.h"
#include "platform/programbus.h"
#include "platform/quitsignals.h"
#include "platform/service.h"
#include "prefs/prefsfile.h"
#include "titles/readymenu.h"
#include "titles/titleevents.h"

#include <QFile>
#include <QGuiApplication>
#include <QLoggingCategory>

#include <memory>

// Quiet unless asked for (QT_LOGGING_RULES="kestrel.*=true").
Q_LOGGING_CATEGORY(lcLifecycle, "kestrel.lifecycle", QtWarningMsg)

namespace {
std::unique_ptr<platform::QuitSignals> AppleEventQuitAppUPP;
QMetaObject::Connection sessionEndConnection;
bool VolumeCarbonEventRef = false;
} // namespace

OSErr AppleEventQuitApp() {
    QuitApplicationEventLoop();
    return noErr;
}

OSStatus InstallAppleEventHandlers() {
    AppleEventQuitAppUPP = std::make_unique<platform::QuitSignals>();
    const bool installed = AppleEventQuitAppUPP->install([](int signal) {
        qCInfo(lcLifecycle, "signal %d: quitting", signal);
        AppleEventQuitApp();
    });
    const OSErr err = installed ? noErr : tmfoErr;
    TestError(err);
    if (err == noErr)
        sessionEndConnection = QObject::connect(qGuiApp, &QGuiApplication::commitDataRequest, [] {
            qCInfo(lcLifecycle, "desktop session ending: quitting");
            AppleEventQuitApp();
        });
    return err;
}

void RemoveAppleEventHandlers() {
    QObject::disconnect(sessionEndConnection);
    AppleEventQuitAppUPP.reset();
}

OSStatus VolumeCarbonEvent(platform::MountChange kind) {
    if (kind == platform::MountChange::Mounted || kind == platform::MountChange::Unmounted)
        DestroyFolderCachedMenu(nullptr);
    return noErr;
}

OSStatus InstallCarbonEventHandlers() {
    const bool watching = platform::service<platform::Mounts>().start(
        [](platform::MountChange kind, const QByteArray &mountPoint) {
            qCInfo(lcLifecycle, "volume %s: %s",
                   kind == platform::MountChange::Mounted ? "mounted" : "unmounted",
                   qPrintable(QFile::decodeName(mountPoint)));
            VolumeCarbonEvent(kind);
        });
    const OSErr err = watching ? noErr : fnfErr;
    TestError(err);
    VolumeCarbonEventRef = watching;
    return err;
}

void RemoveCarbonEventHandlers() {
    if (VolumeCarbonEventRef)
        platform::service<platform::Mounts>().stop();
    VolumeCarbonEventRef = false;
}

void RunKestrelMenu() {
    // Each stage runs only when the one before it succeeded; the unwinding
    // undoes exactly what was installed. Preferences are saved only after a
    // normal run, so a damaged file is never overwritten.
    if (InstallAppleEventHandlers() != noErr)
        return;
    if (InstallCarbonEventHandlers() == noErr) {
        // A failed initialisation leaves what it made to the end of the process.
        if (InitialiseReadyMenus() == noErr) {
            // Titles already made when a rebuild fails stay until the process ends.
            if (LoadPreferences() == noErr && RebuildReadyMenus() == noErr) {
                // A missing file manager has been reported; the menus work without it.
                if (generalSettings.finderToFront)
                    BringFinderToFront();
                {
                    // From now on a menu can be asked for from outside: a key
                    // the desktop binds, or the program started again.
                    const platform::ProgramBus bus(PopUpReadyMenu);
                    qCInfo(lcLifecycle, "running");
                    RunApplicationEventLoop();
                }
                SavePreferences();
                ClearReadyMenus();
            }
            DestroyReadyMenus();
        }
        RemoveCarbonEventHandlers();
    }
    RemoveAppleEventHandlers();
}
