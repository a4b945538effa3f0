// Title behaviour: the hover rules at every mode and area (edge pixels
// included), stepping aside for a fullscreen front window, clicks and dialogs.
#include "tests/widget/titles_fixture.h"

#include "platform/doubles/fakeprocesses.h"
#include "tests/support/installed.h"
#include "titles/userinteraction.h"

#include <QList>

namespace {

class TitlesEventsTest : public TitlesTest {
protected:
    void SetUp() override {
        TitlesTest::SetUp();
        title = AddTitle(kSideLeft);
    }

    // Whether an automation engine is among the running processes.
    void SetAutomationEngineRunning(bool running) {
        processes.table.clear();
        processes.table.append({100, {QByteArrayLiteral("bash")}, true});
        if (running)
            processes.table.append({4242, {QByteArrayLiteral("autokey-gtk")}, true});
    }
    void TearDown() override {
        clicks.clear();
        TitlesTest::TearDown();
        userInteractionHideLevel = 0;
    }

    // One timer tick with the pointer at `where` and `modifiers` held.
    bool HiddenWith(QPoint where, std::uint16_t modifiers = 0, bool buttonDown = false) {
        pointer.state = {where, buttonDown, modifiers};
        AppleMenuCarbonTimer();
        EXPECT_EQ(title->window->isVisible(), !title->hoverHidden);
        return title->hoverHidden;
    }

    void SetHiding(std::int16_t mode, std::uint16_t modifiers, OSType area = kAreaLeft) {
        appleMenuSettings.hideMode = mode;
        appleMenuSettings.hideModifiers = modifiers;
        appleMenuSettings.hideArea = area;
    }

    void MouseDown(QPointF where, ReadyMenu *on = nullptr) {
        MenuWindowCarbonEvent(
            {TitleEventKind::MouseDown, (on != nullptr ? on : title)->window, where});
    }

    struct Click {
        QPoint where;
        ReadyMenu *title;
        bool suppressOpen;
        ReadyMenu *pulled;
    };
    static inline QList<Click> clicks;
    static void RecordClick(QPoint where, ReadyMenu *title, bool suppressOpen) {
        clicks.append({where, title, suppressOpen, pulledReadyMenu});
    }

    ReadyMenu *title = nullptr;
    Installed<platform::FakeProcesses, platform::Processes> processes;
};

TEST_F(TitlesEventsTest, ModifierModeHidesWhileTheKeyIsHeldOverTheTitle) {
    SetHiding(1, controlKey);
    EXPECT_TRUE(HiddenWith({20, 10}, controlKey));
    EXPECT_FALSE(HiddenWith({20, 10}, 0));
    EXPECT_TRUE(HiddenWith({20, 10}, controlKey | shiftKey));
    EXPECT_FALSE(HiddenWith({20, 10}, shiftKey | optionKey | cmdKey));
    // The window's top-left pixels are inside, its right and bottom edges outside.
    EXPECT_TRUE(HiddenWith({0, 0}, controlKey));
    EXPECT_TRUE(HiddenWith({44, 21}, controlKey));
    EXPECT_FALSE(HiddenWith({45, 10}, controlKey));
    EXPECT_FALSE(HiddenWith({20, 22}, controlKey));
    EXPECT_FALSE(HiddenWith({-1, 10}, controlKey));
}

TEST_F(TitlesEventsTest, InverseModeShowsOnlyWhileTheKeyIsHeldOverTheTitle) {
    SetHiding(3, optionKey | shiftKey);
    EXPECT_TRUE(HiddenWith({300, 300}, 0));
    EXPECT_TRUE(HiddenWith({300, 300}, optionKey));
    EXPECT_TRUE(HiddenWith({20, 10}, 0));
    EXPECT_FALSE(HiddenWith({20, 10}, shiftKey));
    EXPECT_TRUE(HiddenWith({45, 10}, shiftKey));
}

TEST_F(TitlesEventsTest, AreaModeHidesOverThePartChosen) {
    // The area is 10..45 across, 0..22 down: middle h 27, v 11.
    SetHiding(2, 0, kAreaLeft);
    EXPECT_TRUE(HiddenWith({26, 10}));
    EXPECT_FALSE(HiddenWith({27, 10}));
    EXPECT_TRUE(HiddenWith({0, 10})); // left of the area but inside the window
    EXPECT_FALSE(HiddenWith({-1, 10}));

    SetHiding(2, 0, kAreaRight);
    EXPECT_FALSE(HiddenWith({26, 10}));
    EXPECT_TRUE(HiddenWith({27, 10}));
    EXPECT_TRUE(HiddenWith({44, 10}));
    EXPECT_FALSE(HiddenWith({45, 10}));

    SetHiding(2, 0, kAreaTop);
    EXPECT_TRUE(HiddenWith({30, 10}));
    EXPECT_FALSE(HiddenWith({30, 11}));

    SetHiding(2, 0, kAreaBottom);
    EXPECT_FALSE(HiddenWith({30, 10}));
    EXPECT_TRUE(HiddenWith({30, 11}));
    EXPECT_TRUE(HiddenWith({30, 21}));
    EXPECT_FALSE(HiddenWith({30, 22}));

    // The centre: top 5, left 18, bottom 17, right 37, the last two outside.
    SetHiding(2, 0, kAreaCentre);
    EXPECT_TRUE(HiddenWith({18, 5}));
    EXPECT_FALSE(HiddenWith({37, 17}));
    EXPECT_TRUE(HiddenWith({36, 16}));
    EXPECT_FALSE(HiddenWith({17, 5}));
    EXPECT_FALSE(HiddenWith({18, 4}));
    EXPECT_FALSE(HiddenWith({37, 10}));
    EXPECT_FALSE(HiddenWith({20, 17}));

    SetHiding(2, 0, kAreaOutside);
    EXPECT_FALSE(HiddenWith({18, 5}));
    EXPECT_TRUE(HiddenWith({37, 17}));
    EXPECT_TRUE(HiddenWith({17, 5}));
    EXPECT_FALSE(HiddenWith({100, 100})); // outside the window: not hidden

    SetHiding(2, 0, FourCC("diag"));
    EXPECT_FALSE(HiddenWith({20, 10}));
}

TEST_F(TitlesEventsTest, OtherModesNeverHide) {
    for (const std::int16_t mode : {0, 4, -1}) {
        SetHiding(mode, 0xFFFF, kAreaCentre);
        EXPECT_FALSE(HiddenWith({20, 10}, 0xFFFF)) << mode;
        EXPECT_FALSE(HiddenWith({300, 300}, 0)) << mode;
    }
}

TEST_F(TitlesEventsTest, NothingChangesWhileAButtonIsDownOrAMenuIsOpen) {
    SetHiding(1, controlKey);
    EXPECT_FALSE(HiddenWith({20, 10}, controlKey, true));
    EXPECT_TRUE(HiddenWith({20, 10}, controlKey));
    EXPECT_TRUE(HiddenWith({300, 300}, 0, true));

    pulledReadyMenu = title;
    const int queries = pointer.queries;
    EXPECT_TRUE(HiddenWith({300, 300}));
    EXPECT_EQ(pointer.queries, queries); // not even asked where the pointer is
    pulledReadyMenu = nullptr;
    EXPECT_FALSE(HiddenWith({300, 300}));
}

TEST_F(TitlesEventsTest, EachTitleIsJudgedInItsOwnCoordinates) {
    ReadyMenu *second = AddTitle(kSideLeft);
    ReadyMenu *right = AddTitle(kSideRight);
    SetHiding(2, 0, kAreaLeft);
    pointer.state = {{45 + 26, 10}, false, 0};
    AppleMenuCarbonTimer();
    EXPECT_FALSE(title->hoverHidden);
    EXPECT_TRUE(second->hoverHidden);
    EXPECT_FALSE(second->window->isVisible());

    // Right-hand titles never hide by hover, even in the inverse mode.
    SetHiding(3, controlKey);
    AppleMenuCarbonTimer();
    EXPECT_TRUE(title->hoverHidden);
    EXPECT_FALSE(right->hoverHidden);
    EXPECT_TRUE(right->window->isVisible());
}

TEST_F(TitlesEventsTest, FullscreenFrontWindowHidesEveryTitle) {
    ReadyMenu *second = AddTitle(kSideLeft);
    SetHiding(1, controlKey);
    EXPECT_TRUE(HiddenWith({20, 10}, controlKey));

    frontWindow.switchTo({77, 7}, true);
    EXPECT_TRUE(classicFrontHideFlag);
    EXPECT_FALSE(title->window->isVisible());
    EXPECT_FALSE(second->window->isVisible());

    // Back to an ordinary window: only the hover-hidden title stays away.
    frontWindow.switchTo({78, 8}, false);
    EXPECT_FALSE(classicFrontHideFlag);
    EXPECT_FALSE(title->window->isVisible());
    EXPECT_TRUE(second->window->isVisible());
    EXPECT_FALSE(HiddenWith({300, 300}));
    EXPECT_TRUE(title->window->isVisible());

    // After the watch is gone, switches no longer reach the titles.
    DestroyReadyMenus();
    frontWindow.switchTo({77, 7}, true);
    EXPECT_TRUE(second->window->isVisible());
    ASSERT_EQ(InitialiseReadyMenus(), noErr);
}

TEST_F(TitlesEventsTest, ClickHighlightsAndOpensTheMenuUnderTheTitle) {
    clickFolderMenu = RecordClick;
    MouseDown({20, 10});
    ASSERT_EQ(clicks.size(), 1);
    EXPECT_EQ(clicks[0].where, QPoint(10, 26));
    EXPECT_EQ(clicks[0].title, title);
    EXPECT_FALSE(clicks[0].suppressOpen);
    EXPECT_EQ(clicks[0].pulled, title);
    EXPECT_EQ(pulledReadyMenu, nullptr);

    // The second title's menu opens at the same place: the point is window-local.
    ReadyMenu *second = AddTitle(kSideLeft);
    MouseDown({60, 10}, second);
    ASSERT_EQ(clicks.size(), 2);
    EXPECT_EQ(clicks[1].where, QPoint(10, 26));
    EXPECT_EQ(clicks[1].title, second);

    // A title of no folder opens no folder menu, but still highlights and returns.
    title->menuSpec->contents = kContentsProcesses;
    MouseDown({20, 10});
    EXPECT_EQ(clicks.size(), 2);
    EXPECT_EQ(pulledReadyMenu, nullptr);
}

TEST_F(TitlesEventsTest, MouseDownWhileAMenuIsOpenDoesNothing) {
    static ReadyMenu *open = nullptr;
    clickFolderMenu = [](QPoint where, ReadyMenu *t, bool suppress) {
        RecordClick(where, t, suppress);
        MenuWindowCarbonEvent({TitleEventKind::MouseDown, open->window, QPointF(20, 10)});
        SelectReadyMenu(open, true);
    };
    open = title;
    MouseDown({20, 10});
    EXPECT_EQ(clicks.size(), 1);
    EXPECT_EQ(pulledReadyMenu, nullptr);
}

TEST_F(TitlesEventsTest, AutomationEngineClickAtOneEighteenIsIgnored) {
    clickFolderMenu = RecordClick;
    SetAutomationEngineRunning(true);
    MouseDown({1.7, 18.9}); // truncated to (1, 18); the window stands at 0, 0
    EXPECT_TRUE(clicks.isEmpty());
    MouseDown({2, 18});
    EXPECT_EQ(clicks.size(), 1);

    // The window's origin is added once more: on the second title (1, 18) becomes (46, 18).
    ReadyMenu *second = AddTitle(kSideLeft);
    MouseDown({1, 18}, second);
    EXPECT_EQ(clicks.size(), 2);

    SetAutomationEngineRunning(false);
    MouseDown({1, 18});
    EXPECT_EQ(clicks.size(), 3);

    // Without a location the click is taken as it comes.
    SetAutomationEngineRunning(true);
    MenuWindowCarbonEvent({TitleEventKind::MouseDown, title->window, std::nullopt});
    EXPECT_EQ(clicks.size(), 4);
    // A window that is no title opens nothing.
    QWidget stranger;
    MenuWindowCarbonEvent({TitleEventKind::MouseDown, &stranger, QPointF(20, 10)});
    MenuWindowCarbonEvent({TitleEventKind::MouseDown, nullptr, QPointF(20, 10)});
    EXPECT_EQ(clicks.size(), 4);
}

TEST_F(TitlesEventsTest, DialogsNestAndAClickDuringOneOnlyBringsUsForward) {
    clickFolderMenu = RecordClick;
    frontWindow.front = {500, 50};
    ProcessSerialNumber outer, inner;
    BeginUserInteraction(&outer);
    EXPECT_EQ(userInteractionHideLevel, 1);
    EXPECT_EQ(outer, (ProcessSerialNumber{500, 50}));
    EXPECT_EQ(frontWindow.front, frontWindow.self);

    BeginUserInteraction(&inner);
    EXPECT_EQ(userInteractionHideLevel, 2);
    EXPECT_EQ(inner, frontWindow.self);

    frontWindow.broughtToFront.clear();
    frontWindow.front = {600, 60};
    MouseDown({20, 10});
    EXPECT_TRUE(clicks.isEmpty());
    EXPECT_EQ(frontWindow.broughtToFront, QList<ProcessSerialNumber>{frontWindow.self});
    // Titles keep showing while a dialog is open.
    EXPECT_TRUE(title->window->isVisible());

    EndUserInteraction(&inner);
    EXPECT_EQ(userInteractionHideLevel, 1);
    EXPECT_EQ(frontWindow.front, frontWindow.self);
    EndUserInteraction(&outer);
    EXPECT_EQ(userInteractionHideLevel, 0);
    EXPECT_EQ(frontWindow.front, (ProcessSerialNumber{500, 50}));

    // Without a window to go back to, the front stays where the dialog left it.
    ProcessSerialNumber previous;
    BeginUserInteraction(&previous);
    EndUserInteraction(nullptr);
    EXPECT_EQ(userInteractionHideLevel, 0);
    EXPECT_EQ(frontWindow.front, frontWindow.self);

    MouseDown({20, 10});
    EXPECT_EQ(clicks.size(), 1);
}

TEST_F(TitlesEventsTest, DialogBracketsReapplyVisibility) {
    frontWindow.fullscreen = true;
    classicFrontHideFlag = true; // as the last switch left it
    ProcessSerialNumber previous;
    BeginUserInteraction(&previous);
    EXPECT_FALSE(title->window->isVisible());
    classicFrontHideFlag = false;
    EndUserInteraction(&previous);
    EXPECT_TRUE(title->window->isVisible());
}

} // namespace
