#include "app/platformservices.h"

#include "platform/dbusfilemanager.h"
#include "platform/dbusnotifications.h"
#include "platform/folderreader.h"
#include "platform/giolauncher.h"
#include "platform/giotrustmarks.h"
#include "platform/messageboxalerts.h"
#include "platform/mountinfo.h"
#include "platform/procfsprocesses.h"
#include "platform/service.h"
#include "platform/startupidtokens.h"
#include "platform/x11frontwindow.h"
#include "platform/x11titlewindows.h"
#include "platform/xcbpointer.h"
#include "platform/xdgautostart.h"
#include "platform/xdgdesktopsettings.h"
#include "platform/xdgterminal.h"

struct PlatformServices::Implementations {
    platform::MessageBoxAlerts alerts;
    platform::XdgAutostart loginItems;
    platform::MountInfoWatcher mounts;
    platform::X11FrontWindow frontWindow{[this] { return activationTokens.lastInputTime(); }};
    platform::XcbPointer pointer;
    platform::X11TitleWindows titleWindows;
    platform::DBusFileManager fileManager;
    platform::GioLauncher launcher;
    platform::ProcFsProcesses processes;
    platform::DBusNotifications notifications;
    platform::GioTrustMarks trustMarks;
    platform::StartupIdTokens activationTokens;
    platform::XdgDesktopSettings desktopSettings;
    platform::FileSystemFolderReader folderReader;
    platform::XdgTerminal terminal;
};

PlatformServices::PlatformServices() : implementations_(std::make_unique<Implementations>()) {
    platform::install<platform::Alerts>(&implementations_->alerts);
    platform::install<platform::LoginItems>(&implementations_->loginItems);
    platform::install<platform::Mounts>(&implementations_->mounts);
    platform::install<platform::FrontWindow>(&implementations_->frontWindow);
    platform::install<platform::Pointer>(&implementations_->pointer);
    platform::install<platform::TitleWindows>(&implementations_->titleWindows);
    platform::install<platform::FileManager>(&implementations_->fileManager);
    platform::install<platform::Launcher>(&implementations_->launcher);
    platform::install<platform::Processes>(&implementations_->processes);
    platform::install<platform::Notifications>(&implementations_->notifications);
    platform::install<platform::TrustMarks>(&implementations_->trustMarks);
    platform::install<platform::ActivationTokens>(&implementations_->activationTokens);
    platform::install<platform::DesktopSettings>(&implementations_->desktopSettings);
    platform::install<platform::FolderReader>(&implementations_->folderReader);
    platform::install<platform::Terminal>(&implementations_->terminal);
}

PlatformServices::~PlatformServices() {
    platform::install<platform::Alerts>(nullptr);
    platform::install<platform::LoginItems>(nullptr);
    platform::install<platform::Mounts>(nullptr);
    platform::install<platform::FrontWindow>(nullptr);
    platform::install<platform::Pointer>(nullptr);
    platform::install<platform::TitleWindows>(nullptr);
    platform::install<platform::FileManager>(nullptr);
    platform::install<platform::Launcher>(nullptr);
    platform::install<platform::Processes>(nullptr);
    platform::install<platform::Notifications>(nullptr);
    platform::install<platform::TrustMarks>(nullptr);
    platform::install<platform::ActivationTokens>(nullptr);
    platform::install<platform::DesktopSettings>(nullptr);
    platform::install<platform::FolderReader>(nullptr);
    platform::install<platform::Terminal>(nullptr);
}
