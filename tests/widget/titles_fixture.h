// Titles on the offscreen platform, with the display's answers played by doubles.
#pragma once

#include "core/settings.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakefrontwindow.h"
#include "platform/doubles/fakepointer.h"
#include "platform/doubles/faketitlewindows.h"
#include "tests/support/installed.h"
#include "titles/readymenu.h"
#include "titles/titleevents.h"

#include <QWidget>
#include <gtest/gtest.h>

#include <deque>

class TitlesTest : public ::testing::Test {
protected:
    void SetUp() override {
        appleMenuSettings = kDefaultAppleMenuSettings;
        ASSERT_EQ(InitialiseReadyMenus(), noErr);
    }

    void TearDown() override {
        ClearReadyMenus();
        DestroyReadyMenus();
        firstMenuSpec = nullptr;
        pulledReadyMenu = nullptr;
        classicFrontHideFlag = false;
        clickFolderMenu = nullptr;
    }

    // Appends a configured menu to the settings (not yet a title).
    MenuSpec *AddSpec(OSType side, OSType titleKind = kTitleColourPicture) {
        specs.push_back(MenuSpec{nullptr, side, kContentsFolder, titleKind, {}, {}});
        MenuSpec **link = &firstMenuSpec;
        while (*link != nullptr)
            link = &(*link)->next;
        return *link = &specs.back();
    }

    ReadyMenu *AddTitle(OSType side, OSType titleKind = kTitleColourPicture) {
        OSErr err = noErr;
        ReadyMenu *title = AddReadyMenu(&err, AddSpec(side, titleKind));
        EXPECT_EQ(err, noErr);
        return title;
    }

    Installed<platform::FakeAlerts, platform::Alerts> alerts;
    Installed<platform::FakeFrontWindow, platform::FrontWindow> frontWindow;
    Installed<platform::FakePointer, platform::Pointer> pointer;
    Installed<platform::FakeTitleWindows, platform::TitleWindows> titleWindows;
    std::deque<MenuSpec> specs;
};
