// Titles on the offscreen platform: where they stand, the hover rules at every
// mode and area (edge pixels included), stepping aside for a fullscreen
// window, clicks, dialogs, and the timer that sleeps while nothing moves.
#include "tests/widget/titles_fixture.h"

#include "platform/doubles/fakeprocesses.h"
#include "titles/userinteraction.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTest>

namespace {

int ScreenWidth() {
    return QGuiApplication::primaryScreen()->geometry().width();
}

TEST_F(TitlesTest, DefaultMenusGiveOneLeftTitleAtTheCornerThatNeverTakesTheFocus) {
    AddSpec(kSideRight); // the default right-hand menu gets no title
    EXPECT_EQ(RebuildReadyMenus(), noErr);
    EXPECT_EQ(firstReadyMenu, nullptr);
    AddSpec(kSideLeft);
    ASSERT_EQ(RebuildReadyMenus(), noErr);
    ASSERT_EQ(RebuildReadyMenus(), noErr); // afresh: one title, not two

    ReadyMenu *title = firstReadyMenu;
    ASSERT_NE(title, nullptr);
    EXPECT_EQ(title->next, nullptr);
    EXPECT_EQ(title->window->geometry(), QRect(0, 0, 45, 22));
    EXPECT_EQ(title->titleRect, (Rect{0, 10, 22, 45}));
    EXPECT_TRUE(title->window->isVisible());
    EXPECT_EQ(menuBarRect, (Rect{0, 0, 22, std::int16_t(ScreenWidth())}));
    EXPECT_EQ(titleWindows.keptAbove, QList<QWidget *>{title->window});
    const Qt::WindowFlags flags = title->window->windowFlags();
    EXPECT_TRUE(flags & Qt::X11BypassWindowManagerHint);
    EXPECT_TRUE(flags & Qt::WindowDoesNotAcceptFocus);
    EXPECT_TRUE(title->window->testAttribute(Qt::WA_ShowWithoutActivating));

    QWidget stranger;
    EXPECT_EQ(FindReadyMenu(&stranger), nullptr);
    ClearReadyMenus();
    EXPECT_TRUE(titleWindows.keptAbove.isEmpty());
}

TEST_F(TitlesTest, TitlesArePlacedFromBothEdgesAndCloseUpOnRemoval) {
    ReadyMenu *right = AddTitle(kSideRight);
    ReadyMenu *first = AddTitle(kSideLeft);
    ReadyMenu *second = AddTitle(kSideLeft, kTitleFrontApplication);
    ReadyMenu *right2 = AddTitle(kSideRight);
    ReadyMenu *other = AddTitle(FourCC("midl")); // spans what the two cursors leave
    const int width = ScreenWidth();
    EXPECT_EQ(right->window->geometry(), QRect(width - 22, 0, 22, 22));
    EXPECT_EQ(right->titleRect, (Rect{0, 0, 22, 22}));
    EXPECT_EQ(second->window->geometry(), QRect(45, 0, 45, 22));
    EXPECT_EQ(second->titleRect, (Rect{0, 10, 22, 45}));
    EXPECT_EQ(right2->window->geometry(), QRect(width - 44, 0, 22, 22));
    EXPECT_EQ(other->window->geometry(), QRect(90, 0, width - 44 - 90, 22));

    QWidget *gone = first->window;
    RemoveReadyMenu(first);
    EXPECT_EQ(second->window->geometry(), QRect(0, 0, 45, 22));
    EXPECT_EQ(FindReadyMenu(gone), nullptr);
    EXPECT_EQ(FindReadyMenu(second->window), second);
}

class TitlesEventsTest : public TitlesTest {
protected:
    void SetUp() override {
        TitlesTest::SetUp();
        title = AddTitle(kSideLeft);
    }
    void TearDown() override {
        clicks.clear();
        TitlesTest::TearDown();
        userInteractionHideLevel = 0;
    }

    // One timer tick with the pointer at `where`, `modifiers` held.
    bool HiddenWith(QPoint where, std::uint16_t modifiers = 0, bool buttonDown = false) {
        pointer.state = {where, buttonDown, modifiers};
        AppleMenuCarbonTimer();
        EXPECT_EQ(title->window->isVisible(), !title->hoverHidden);
        return title->hoverHidden;
    }
    void MouseDown(QPointF where, ReadyMenu *on = nullptr) {
        MenuWindowCarbonEvent(
            {TitleEventKind::MouseDown, (on != nullptr ? on : title)->window, where});
    }

    struct Click {
        QPoint where;
        ReadyMenu *title;
        ReadyMenu *pulled;
    };
    static inline QList<Click> clicks;
    static void RecordClick(QPoint where, ReadyMenu *title, bool suppressOpen) {
        EXPECT_FALSE(suppressOpen);
        clicks.append({where, title, pulledReadyMenu});
    }

    ReadyMenu *title = nullptr;
};

TEST_F(TitlesEventsTest, HoverRulesAtEveryModeAndEdge) {
    // The window is 0..45 across and 0..22 down, its area 10..45: middles h 27,
    // v 11; the centre is top 5, left 18, bottom 17, right 37, the last two outside.
    const struct {
        std::int16_t mode;
        std::uint16_t keys; // the setting's modifiers
        OSType area;
        QPoint at;
        std::uint16_t held;
        bool hidden;
    } cases[] = {
        {1, controlKey, kAreaLeft, {20, 10}, controlKey, true},
        {1, controlKey, kAreaLeft, {20, 10}, 0, false},
        {1, controlKey, kAreaLeft, {20, 10}, controlKey | shiftKey, true},
        {1, controlKey, kAreaLeft, {20, 10}, shiftKey | optionKey | cmdKey, false},
        {1, controlKey, kAreaLeft, {0, 0}, controlKey, true},
        {1, controlKey, kAreaLeft, {44, 21}, controlKey, true},
        {1, controlKey, kAreaLeft, {45, 10}, controlKey, false},
        {1, controlKey, kAreaLeft, {20, 22}, controlKey, false},
        {1, controlKey, kAreaLeft, {-1, 10}, controlKey, false},
        {3, optionKey | shiftKey, kAreaLeft, {300, 300}, optionKey, true},
        {3, optionKey | shiftKey, kAreaLeft, {20, 10}, 0, true},
        {3, optionKey | shiftKey, kAreaLeft, {20, 10}, shiftKey, false},
        {3, optionKey | shiftKey, kAreaLeft, {45, 10}, shiftKey, true},
        {2, 0, kAreaLeft, {26, 10}, 0, true},
        {2, 0, kAreaLeft, {27, 10}, 0, false},
        {2, 0, kAreaLeft, {0, 10}, 0, true},
        {2, 0, kAreaLeft, {-1, 10}, 0, false},
        {2, 0, kAreaRight, {27, 10}, 0, true},
        {2, 0, kAreaRight, {45, 10}, 0, false},
        {2, 0, kAreaTop, {30, 10}, 0, true},
        {2, 0, kAreaTop, {30, 11}, 0, false},
        {2, 0, kAreaBottom, {30, 11}, 0, true},
        {2, 0, kAreaBottom, {30, 22}, 0, false},
        {2, 0, kAreaCentre, {18, 5}, 0, true},
        {2, 0, kAreaCentre, {36, 16}, 0, true},
        {2, 0, kAreaCentre, {37, 17}, 0, false},
        {2, 0, kAreaCentre, {17, 5}, 0, false},
        {2, 0, kAreaCentre, {18, 4}, 0, false},
        {2, 0, kAreaOutside, {18, 5}, 0, false},
        {2, 0, kAreaOutside, {37, 17}, 0, true},
        {2, 0, kAreaOutside, {100, 100}, 0, false},
        {2, 0, FourCC("diag"), {20, 10}, 0, false},
        {0, 0xFFFF, kAreaCentre, {20, 10}, 0xFFFF, false},
        {4, 0xFFFF, kAreaCentre, {300, 300}, 0, false},
        {-1, 0xFFFF, kAreaCentre, {20, 10}, 0xFFFF, false},
    };
    for (const auto &c : cases) {
        appleMenuSettings.hideMode = c.mode;
        appleMenuSettings.hideModifiers = c.keys;
        appleMenuSettings.hideArea = c.area;
        EXPECT_EQ(HiddenWith(c.at, c.held), c.hidden)
            << "mode " << c.mode << " at " << c.at.x() << "," << c.at.y();
    }
}

TEST_F(TitlesEventsTest, HoverStaysWhileAButtonIsDownOrAMenuIsOpenAndEachTitleJudgesItsOwnPlace) {
    appleMenuSettings.hideModifiers = controlKey;
    EXPECT_FALSE(HiddenWith({20, 10}, controlKey, true));
    EXPECT_TRUE(HiddenWith({20, 10}, controlKey));
    EXPECT_TRUE(HiddenWith({300, 300}, 0, true));
    pulledReadyMenu = title;
    const int queries = pointer.queries;
    EXPECT_TRUE(HiddenWith({300, 300}));
    EXPECT_EQ(pointer.queries, queries) << "not even asked where the pointer is";
    pulledReadyMenu = nullptr;

    ReadyMenu *second = AddTitle(kSideLeft);
    ReadyMenu *right = AddTitle(kSideRight);
    appleMenuSettings.hideMode = 2;
    EXPECT_FALSE(HiddenWith({45 + 26, 10}));
    EXPECT_TRUE(second->hoverHidden);
    appleMenuSettings.hideMode = 3; // right-hand titles never hide by hover
    AppleMenuCarbonTimer();
    EXPECT_FALSE(right->hoverHidden);
    EXPECT_TRUE(right->window->isVisible());
}

TEST_F(TitlesEventsTest, AFullscreenFrontWindowHidesEveryTitleUntilItGoes) {
    ReadyMenu *second = AddTitle(kSideLeft);
    appleMenuSettings.hideModifiers = controlKey;
    EXPECT_TRUE(HiddenWith({20, 10}, controlKey));
    frontWindow.switchTo({77, 7}, true);
    EXPECT_FALSE(second->window->isVisible());
    frontWindow.switchTo({78, 8}, false);
    EXPECT_FALSE(title->window->isVisible()) << "still hidden by hover";
    EXPECT_TRUE(second->window->isVisible());

    // Dialogs re-apply both rules; the fullscreen state is the last switch's.
    classicFrontHideFlag = true;
    ProcessSerialNumber previous;
    BeginUserInteraction(&previous);
    EXPECT_FALSE(second->window->isVisible());
    classicFrontHideFlag = false;
    EndUserInteraction(&previous);
    EXPECT_TRUE(second->window->isVisible());
}

TEST_F(TitlesEventsTest, AClickOpensTheMenuUnderTheFirstTitleOnceAtATime) {
    clickFolderMenu = RecordClick;
    MouseDown({20, 10});
    ReadyMenu *second = AddTitle(kSideLeft);
    MouseDown({60, 10}, second);
    ASSERT_EQ(clicks.size(), 2);
    EXPECT_EQ(clicks[0].where, QPoint(10, 26));
    EXPECT_EQ(clicks[0].pulled, title);
    EXPECT_EQ(clicks[1].where, QPoint(10, 26)) << "the title's own local point";
    EXPECT_EQ(clicks[1].title, second);
    EXPECT_EQ(pulledReadyMenu, nullptr);

    // A second press while a menu is open does nothing.
    clickFolderMenu = [](QPoint where, ReadyMenu *t, bool suppress) {
        RecordClick(where, t, suppress);
        MenuWindowCarbonEvent({TitleEventKind::MouseDown, t->window, QPointF(20, 10)});
    };
    MouseDown({20, 10});
    EXPECT_EQ(clicks.size(), 3);
    // A title of no folder highlights and opens nothing; no title, nothing at all.
    title->menuSpec->contents = kContentsProcesses;
    MouseDown({20, 10});
    QWidget stranger;
    MenuWindowCarbonEvent({TitleEventKind::MouseDown, &stranger, QPointF(20, 10)});
    EXPECT_EQ(clicks.size(), 3);
}

TEST_F(TitlesEventsTest, AnAutomationEnginesClickAtOneEighteenIsIgnored) {
    Installed<platform::FakeProcesses, platform::Processes> processes;
    processes.table = {{4242, {QByteArrayLiteral("autokey-gtk")}, true}};
    clickFolderMenu = RecordClick;
    MouseDown({1.7, 18.9}); // truncated to (1, 18); the window stands at 0, 0
    EXPECT_TRUE(clicks.isEmpty());
    MouseDown({2, 18});
    ReadyMenu *second = AddTitle(kSideLeft);
    MouseDown({1, 18}, second); // the origin added once more: (46, 18)
    MenuWindowCarbonEvent({TitleEventKind::MouseDown, title->window, std::nullopt});
    EXPECT_EQ(clicks.size(), 3);
    processes.table.clear();
    MouseDown({1, 18});
    EXPECT_EQ(clicks.size(), 4);
}

TEST_F(TitlesEventsTest, DialogsNestAndAClickDuringOneOnlyBringsUsForward) {
    clickFolderMenu = RecordClick;
    frontWindow.front = {500, 50};
    ProcessSerialNumber outer, inner;
    BeginUserInteraction(&outer);
    BeginUserInteraction(&inner);
    EXPECT_EQ(userInteractionHideLevel, 2);
    EXPECT_EQ(outer, (ProcessSerialNumber{500, 50}));
    EXPECT_EQ(inner, frontWindow.self);

    frontWindow.broughtToFront.clear();
    MouseDown({20, 10});
    EXPECT_TRUE(clicks.isEmpty());
    EXPECT_EQ(frontWindow.broughtToFront, QList<ProcessSerialNumber>{frontWindow.self});
    EXPECT_TRUE(title->window->isVisible());

    EndUserInteraction(&inner);
    EndUserInteraction(&outer);
    EXPECT_EQ(frontWindow.front, (ProcessSerialNumber{500, 50}));
    ProcessSerialNumber previous;
    BeginUserInteraction(&previous);
    EndUserInteraction(nullptr); // nothing to go back to: the front stays
    EXPECT_EQ(frontWindow.front, frontWindow.self);
    EXPECT_EQ(userInteractionHideLevel, 0);
    MouseDown({20, 10});
    EXPECT_EQ(clicks.size(), 1);
}

TEST_F(TitlesTest, WhereTheDisplayTellsOfInputTheTimerSleepsWhileNothingMoves) {
    DestroyReadyMenus();
    pointer.watchable = true;
    ASSERT_EQ(InitialiseReadyMenus(), noErr);
    ReadyMenu *title = AddTitle(kSideLeft);
    ASSERT_TRUE(pointer.arrived);
    appleMenuSettings.hideMode = 2; // left half
    QTRY_VERIFY(!ReadyMenusAwake());
    const int queries = pointer.queries;
    QCoreApplication::processEvents();
    EXPECT_EQ(pointer.queries, queries) << "asleep: not a single query";

    // Input wakes it: the rule applies at once, and ticking goes on while input does.
    pointer.state.position = {20, 10};
    pointer.inputPending = true;
    pointer.arrived();
    EXPECT_TRUE(title->hoverHidden);
    EXPECT_TRUE(ReadyMenusAwake());
    pointer.state.position = {300, 10};
    pointer.inputPending = true;
    QTRY_VERIFY(!title->hoverHidden);
    QTRY_VERIFY(!ReadyMenusAwake());
}

} // namespace
