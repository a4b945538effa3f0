// Where titles stand: one per left-hand menu, 45 x 22 from the left edge of
// the primary screen, re-placed on every addition and removal.
#include "tests/widget/titles_fixture.h"

#include <QGuiApplication>
#include <QScreen>

namespace {

using TitlesPlacementTest = TitlesTest;

int ScreenWidth() {
    return QGuiApplication::primaryScreen()->geometry().width();
}

TEST_F(TitlesPlacementTest, DefaultMenusGiveOneLeftTitleAtTheScreenCorner) {
    // The default settings: a left-hand folder menu and a right-hand one.
    AddSpec(kSideLeft);
    AddSpec(kSideRight);
    ASSERT_EQ(RebuildReadyMenus(), noErr);

    ASSERT_NE(firstReadyMenu, nullptr);
    EXPECT_EQ(firstReadyMenu->next, nullptr);
    EXPECT_EQ(firstReadyMenu->menuSpec, firstMenuSpec);
    EXPECT_EQ(firstReadyMenu->window->geometry(), QRect(0, 0, 45, 22));
    EXPECT_EQ(firstReadyMenu->titleRect, (Rect{0, 10, 22, 45}));
    EXPECT_FALSE(firstReadyMenu->hoverHidden);
    EXPECT_EQ(firstReadyMenu->cachedMenu, nullptr);
    EXPECT_TRUE(firstReadyMenu->window->isVisible());
    EXPECT_EQ(menuBarRect, (Rect{0, 0, 22, std::int16_t(ScreenWidth())}));
    EXPECT_EQ(titleWindows.keptAbove, QList<QWidget *>{firstReadyMenu->window});

    // A title is a window of its own that never takes the focus or a frame.
    const Qt::WindowFlags flags = firstReadyMenu->window->windowFlags();
    EXPECT_TRUE(flags & Qt::X11BypassWindowManagerHint);
    EXPECT_TRUE(flags & Qt::WindowDoesNotAcceptFocus);
    EXPECT_TRUE(flags & Qt::WindowStaysOnTopHint);
    EXPECT_TRUE(flags & Qt::FramelessWindowHint);
    EXPECT_TRUE(firstReadyMenu->window->testAttribute(Qt::WA_ShowWithoutActivating));
}

TEST_F(TitlesPlacementTest, TwoLeftTitlesStandSideBySideAndCloseUpOnRemoval) {
    AddSpec(kSideLeft);
    AddSpec(kSideRight);
    AddSpec(kSideLeft, kTitleFrontApplication);
    ASSERT_EQ(RebuildReadyMenus(), noErr);
    ReadyMenu *first = firstReadyMenu;
    ASSERT_NE(first, nullptr);
    ReadyMenu *second = first->next;
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->menuSpec->titleKind, kTitleFrontApplication);
    EXPECT_EQ(first->window->geometry(), QRect(0, 0, 45, 22));
    EXPECT_EQ(second->window->geometry(), QRect(45, 0, 45, 22));
    EXPECT_EQ(second->titleRect, (Rect{0, 10, 22, 45}));
    EXPECT_EQ(FindReadyMenu(second->window), second);

    QWidget *gone = first->window;
    RemoveReadyMenu(first);
    EXPECT_EQ(firstReadyMenu, second);
    EXPECT_EQ(second->window->geometry(), QRect(0, 0, 45, 22));
    EXPECT_EQ(FindReadyMenu(gone), nullptr);
    EXPECT_FALSE(titleWindows.keptAbove.contains(gone));
}

TEST_F(TitlesPlacementTest, RightHandTitlesArePlacedFromTheRightEdge) {
    // No right-hand title is made by a rebuild, but placement still knows them.
    ReadyMenu *right = AddTitle(kSideRight);
    ReadyMenu *left = AddTitle(kSideLeft);
    ReadyMenu *right2 = AddTitle(kSideRight);
    const int width = ScreenWidth();
    EXPECT_EQ(right->window->geometry(), QRect(width - 22, 0, 22, 22));
    EXPECT_EQ(right->titleRect, (Rect{0, 0, 22, 22}));
    EXPECT_EQ(left->window->geometry(), QRect(0, 0, 45, 22));
    EXPECT_EQ(right2->window->geometry(), QRect(width - 44, 0, 22, 22));

    // Any other side spans what is left between the two cursors.
    ReadyMenu *other = AddTitle(FourCC("midl"));
    EXPECT_EQ(other->window->geometry(), QRect(45, 0, width - 44 - 45, 22));
    EXPECT_EQ(other->titleRect, (Rect{0, 0, 22, std::int16_t(width - 44 - 45)}));
}

TEST_F(TitlesPlacementTest, RebuildMakesTitlesOnlyForLeftMenus) {
    EXPECT_EQ(RebuildReadyMenus(), noErr);
    EXPECT_EQ(firstReadyMenu, nullptr);

    AddSpec(kSideRight);
    EXPECT_EQ(RebuildReadyMenus(), noErr);
    EXPECT_EQ(firstReadyMenu, nullptr);

    AddSpec(kSideLeft);
    ASSERT_EQ(RebuildReadyMenus(), noErr);
    ASSERT_EQ(RebuildReadyMenus(), noErr);
    // A rebuild starts afresh: one title, not two.
    ASSERT_NE(firstReadyMenu, nullptr);
    EXPECT_EQ(firstReadyMenu->next, nullptr);
    EXPECT_EQ(FindReadyMenu(nullptr), nullptr);

    QWidget stranger;
    EXPECT_EQ(FindReadyMenu(&stranger), nullptr);
    ClearReadyMenus();
    EXPECT_EQ(firstReadyMenu, nullptr);
    EXPECT_TRUE(titleWindows.keptAbove.isEmpty());
}

TEST_F(TitlesPlacementTest, CompositorDecidesTheTranslucentLook) {
    EXPECT_TRUE(system105OrLater);
    ReadyMenu *title = AddTitle(kSideLeft);
    EXPECT_TRUE(title->window->testAttribute(Qt::WA_TranslucentBackground));

    ClearReadyMenus();
    DestroyReadyMenus();
    titleWindows.compositing = false;
    ASSERT_EQ(InitialiseReadyMenus(), noErr);
    EXPECT_FALSE(system105OrLater);
    title = AddTitle(kSideLeft);
    EXPECT_FALSE(title->window->testAttribute(Qt::WA_TranslucentBackground));
}

} // namespace
