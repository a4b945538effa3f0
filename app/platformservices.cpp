#include "app/platformservices.h"

#include "platform/messageboxalerts.h"
#include "platform/mountinfo.h"
#include "platform/service.h"
#include "platform/xdgautostart.h"

struct PlatformServices::Implementations {
    platform::MessageBoxAlerts alerts;
    platform::XdgAutostart loginItems;
    platform::MountInfoWatcher mounts;
};

PlatformServices::PlatformServices() : implementations_(std::make_unique<Implementations>()) {
    platform::install<platform::Alerts>(&implementations_->alerts);
    platform::install<platform::LoginItems>(&implementations_->loginItems);
    platform::install<platform::Mounts>(&implementations_->mounts);
}

PlatformServices::~PlatformServices() {
    platform::install<platform::Alerts>(nullptr);
    platform::install<platform::LoginItems>(nullptr);
    platform::install<platform::Mounts>(nullptr);
}
