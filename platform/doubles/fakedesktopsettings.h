// Desktop settings as the test gives them.
#pragma once

#include "platform/desktopsettings.h"

namespace platform {

class FakeDesktopSettings : public DesktopSettings {
public:
    ToolkitSettings xsettings() override { return fromXSettings; }
    ToolkitSettings settingsIni() override { return fromSettingsIni; }
    std::optional<ColourScheme> portalColourScheme() override { return fromPortal; }
    void setChangedHandler(std::function<void()> handler) override { changed = std::move(handler); }

    ToolkitSettings fromXSettings;
    ToolkitSettings fromSettingsIni;
    std::optional<ColourScheme> fromPortal;
    std::function<void()> changed;
};

} // namespace platform
