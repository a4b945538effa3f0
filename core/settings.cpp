#include "core/settings.h"

#include "core/errors.h"
#include "core/folders.h"
#include "core/lists.h"
#include "finder/alias.h"
#include "prefs/openatlogin.h"

#include <QCoreApplication>

#include <sys/stat.h>

MenuSpec *firstMenuSpec = nullptr;
AppleMenuSettings appleMenuSettings = kDefaultAppleMenuSettings;
GeneralSettings generalSettings = kDefaultGeneralSettings;

MenuSpec *AddMenuToPreferences(OSErr *status, OSType side, OSType contents, OSType titleKind,
                               const FSSpec *folder) {
    auto *spec = AllocRecord<MenuSpec>(status);
    if (*status != noErr)
        return nullptr;
    spec->side = side;
    spec->contents = contents;
    spec->titleKind = titleKind;
    if (folder != nullptr)
        spec->folder = *folder;
    AddToLinkedList(&firstMenuSpec, spec, static_cast<MenuSpec *>(nullptr));
    return spec;
}

OSErr RemoveMenuFromPreferences(MenuSpec *menuSpec) {
    RemoveFromLinkedList(&firstMenuSpec, menuSpec);
    DestroyRecord(menuSpec);
    return noErr;
}

QByteArray ClimbToStartupVolume(const QByteArray &start) {
    QByteArray candidate;
    QByteArray current = start;
    // At most ten successful steps; the root is its own parent and ends the climb.
    for (int step = 0; step < 10; ++step) {
        struct stat info {};
        if (::lstat(current.constData(), &info) != 0)
            break;
        candidate = current;
        const QByteArray parent = ParentPath(current);
        if (parent == current)
            break;
        current = parent;
    }
    return candidate;
}

OSErr SetDefaultPreferences() {
    QByteArray preferencesFolder;
    if (OSErr err = FindPreferencesFolder(&preferencesFolder, true); err != noErr) {
        TestError(err);
        return err;
    }
    const FSSpec menuFolder{JoinPath(preferencesFolder, kMenuItemsFolderName)};
    // An existing folder from an earlier installation keeps its contents.
    ::mkdir(menuFolder.path.constData(), 0755);

    // Each default link is made only when its target is there; a failure just
    // leaves it out.
    QByteArray lastFound;
    if (QByteArray home; FindHomeFolder(&home) == noErr) {
        const FSSpec item{home};
        CreateAlias(&item, &menuFolder);
        lastFound = home;
    }
    if (QByteArray applications; FindApplicationsFolder(&applications) == noErr) {
        const FSSpec item{applications};
        // Named as launchers and file managers name it.
        CreateAlias(&item, &menuFolder,
                    QCoreApplication::translate("Settings", "Applications").toUtf8());
        lastFound = applications;
    }
    if (!lastFound.isEmpty()) {
        if (const QByteArray volume = ClimbToStartupVolume(lastFound); !volume.isEmpty()) {
            const FSSpec item{volume};
            CreateAlias(&item, &menuFolder);
        }
    }

    OSErr status = noErr;
    AddMenuToPreferences(&status, kSideLeft, kContentsFolder, kTitleColourPicture, &menuFolder);
    if (status != noErr)
        return status;
    AddMenuToPreferences(&status, kSideRight, kContentsProcesses, kTitleFrontApplication, nullptr);
    if (status != noErr)
        return status;
    ApplyOpenAtStartupSetting();
    return status;
}
