// Titles on the offscreen platform: where they stand, the hover rules at every
// mode and area (edge pixels included), clicks, dialogs, the timer that sleeps
// while nothing moves; and how they look as painted: images centred by the
// unsigned-shift rule, the opacities, the selected look, the opaque look in a
// panel's colours while no compositor runs, the built-in images at 1.5x; and
// drops through the window's own drag events with real drag data: which drags
// it takes and what it answers the source, its highlight, the links a drop
// makes (odd names byte for byte) and where a failing drop stops.
#include "tests/unit/foldermenu_testfolder.h"

#include "core/settings.h"
#include "foldermenus/foldercache.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakefrontwindow.h"
#include "platform/doubles/fakepointer.h"
#include "platform/doubles/fakeprocesses.h"
#include "platform/doubles/faketitlewindows.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"
#include "titles/drawreadymenu.h"
#include "titles/readymenu.h"
#include "titles/titledrops.h"
#include "titles/titleevents.h"
#include "titles/titlewindow.h"
#include "titles/userinteraction.h"

#include <QApplication>
#include <QDir>
#include <QDropEvent>
#include <QImage>
#include <QMimeData>
#include <QPainter>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include <climits>
#include <deque>
#include <memory>

namespace {

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

TEST_F(TitlesTest, TitlesArePlacedFromBothEdgesAndCloseUpOnRemoval) {
    AddSpec(kSideRight); // the default right-hand menu gets no title
    AddSpec(kSideLeft);
    ASSERT_EQ(RebuildReadyMenus(), noErr);
    ASSERT_EQ(RebuildReadyMenus(), noErr); // afresh: one title, not two
    ReadyMenu *first = firstReadyMenu;
    ASSERT_TRUE(first != nullptr && first->next == nullptr);
    EXPECT_EQ(first->window->geometry(), QRect(0, 0, 45, 22));
    EXPECT_EQ(first->titleRect, (Rect{0, 10, 22, 45}));

    const int width = menuBarRect.right;
    ReadyMenu *right = AddTitle(kSideRight);
    ReadyMenu *second = AddTitle(kSideLeft, kTitleFrontApplication);
    ReadyMenu *other = AddTitle(FourCC("midl")); // spans what the two cursors leave
    EXPECT_EQ(right->window->geometry(), QRect(width - 22, 0, 22, 22));
    EXPECT_EQ(second->window->geometry(), QRect(45, 0, 45, 22));
    EXPECT_EQ(other->window->geometry(), QRect(90, 0, width - 22 - 90, 22));
    RemoveReadyMenu(first);
    EXPECT_EQ(second->window->geometry(), QRect(0, 0, 45, 22));
}

class TitlesEventsTest : public TitlesTest {
protected:
    void SetUp() override {
        TitlesTest::SetUp();
        title = AddTitle(kSideLeft);
        clickFolderMenu = [](QPoint where, ReadyMenu *t, bool, bool) { clicks.append({where, t}); };
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

    static inline QList<std::pair<QPoint, ReadyMenu *>> clicks;
    ReadyMenu *title = nullptr;
};

TEST_F(TitlesEventsTest, HoverRulesAtEveryModeAndEdge) {
    // The window is 0..45 across and 0..22 down, its area 10..45: middles h 27,
    // v 11; the centre is top 5, left 18, bottom 17, right 37, the last two outside.
    const std::uint16_t ctrl = controlKey, optShift = optionKey | shiftKey;
    const struct {
        std::int16_t mode;
        std::uint16_t keys; // the setting's modifiers
        OSType area;
        QPoint at;
        std::uint16_t held;
        bool hidden;
    } cases[] = {
        {1, ctrl, 0, {20, 10}, ctrl, true},
        {1, ctrl, 0, {20, 10}, ctrl | shiftKey, true},
        {1, ctrl, 0, {20, 10}, shiftKey | optionKey | cmdKey, false},
        {1, ctrl, 0, {0, 0}, ctrl, true},
        {1, ctrl, 0, {45, 10}, ctrl, false},
        {1, ctrl, 0, {20, 22}, ctrl, false},
        {3, optShift, 0, {300, 300}, optionKey, true},
        {3, optShift, 0, {20, 10}, 0, true},
        {3, optShift, 0, {20, 10}, shiftKey, false},
        {2, 0, kAreaLeft, {26, 10}, 0, true},
        {2, 0, kAreaLeft, {27, 10}, 0, false},
        {2, 0, kAreaRight, {27, 10}, 0, true},
        {2, 0, kAreaTop, {30, 11}, 0, false},
        {2, 0, kAreaBottom, {30, 11}, 0, true},
        {2, 0, kAreaCentre, {18, 5}, 0, true},
        {2, 0, kAreaCentre, {37, 17}, 0, false},
        {2, 0, kAreaOutside, {37, 17}, 0, true},
        {2, 0, FourCC("diag"), {20, 10}, 0, false},
        {0, 0xFFFF, kAreaCentre, {20, 10}, 0xFFFF, false},
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
    pulledReadyMenu = title;
    const int queries = pointer.queries;
    EXPECT_TRUE(HiddenWith({300, 300}));
    EXPECT_EQ(pointer.queries, queries) << "not even asked where the pointer is";
    pulledReadyMenu = nullptr;

    ReadyMenu *second = AddTitle(kSideLeft);
    ReadyMenu *right = AddTitle(kSideRight);
    appleMenuSettings.hideMode = 3; // right-hand titles never hide by hover
    EXPECT_TRUE(HiddenWith({45 + 20, 10}, controlKey));
    EXPECT_FALSE(second->hoverHidden) << "the key held over its own place";
    EXPECT_TRUE(right->window->isVisible());
}

TEST_F(TitlesEventsTest, AClickOpensTheMenuUnderTheFirstTitleOnceAtATimeUnlessAnEngineMadeIt) {
    MouseDown({20, 10});
    ReadyMenu *second = AddTitle(kSideLeft);
    MouseDown({60, 10}, second);
    const QList<std::pair<QPoint, ReadyMenu *>> expected{{{10, 26}, title}, {{10, 26}, second}};
    EXPECT_EQ(clicks, expected) << "each title's own local point";
    // A second press while a menu is open does nothing.
    clickFolderMenu = [](QPoint where, ReadyMenu *t, bool, bool) {
        clicks.append({where, t});
        MenuWindowCarbonEvent({TitleEventKind::MouseDown, t->window, QPointF(20, 10)});
    };
    MouseDown({20, 10});
    EXPECT_EQ(clicks.size(), 3);

    // An automation engine's click at (1, 18), truncated, the origin added again.
    Installed<platform::FakeProcesses, platform::Processes> processes;
    processes.table = {{4242, {QByteArrayLiteral("autokey-gtk")}, true}};
    MouseDown({1.7, 18.9});
    EXPECT_EQ(clicks.size(), 3);
    MouseDown({1, 18}, second); // (46, 18): taken
    MenuWindowCarbonEvent({TitleEventKind::MouseDown, title->window, std::nullopt});
    EXPECT_EQ(clicks.size(), 5);
}

TEST_F(TitlesEventsTest, DialogsNestReapplyVisibilityAndAClickDuringOneOnlyBringsUsForward) {
    frontWindow.front = {500, 50};
    ProcessSerialNumber outer, inner;
    BeginUserInteraction(&outer);
    BeginUserInteraction(&inner);
    frontWindow.broughtToFront.clear();
    MouseDown({20, 10});
    EXPECT_TRUE(clicks.isEmpty());
    EXPECT_EQ(frontWindow.broughtToFront, QList<ProcessSerialNumber>{frontWindow.self});
    EndUserInteraction(&inner);
    classicFrontHideFlag = true; // as a switch left it: the end of a dialog applies it
    EndUserInteraction(&outer);
    EXPECT_FALSE(title->window->isVisible());
    EXPECT_EQ(frontWindow.front, (ProcessSerialNumber{500, 50}));
}

TEST_F(TitlesTest, WhereTheDisplayTellsOfInputTheTimerSleepsWhileNothingMoves) {
    DestroyReadyMenus();
    pointer.watchable = true;
    ASSERT_EQ(InitialiseReadyMenus(), noErr);
    ReadyMenu *title = AddTitle(kSideLeft);
    appleMenuSettings.hideMode = 2; // the left half
    ASSERT_TRUE(QTest::qWaitFor([] { return !ReadyMenusAwake(); }));
    const int queries = pointer.queries;
    QCoreApplication::processEvents();
    EXPECT_EQ(pointer.queries, queries) << "asleep: not a single query";
    // Input wakes it: the rule applies at once, and ticks go on while input does.
    pointer.state.position = {20, 10};
    pointer.arrived();
    EXPECT_TRUE(title->hoverHidden);
    pointer.state.position = {300, 10};
    pointer.inputPending = true;
    EXPECT_TRUE(QTest::qWaitFor([&] { return !title->hoverHidden; }));
    EXPECT_TRUE(QTest::qWaitFor([] { return !ReadyMenusAwake(); }));
}

class TitlesDrawingTest : public TitlesTest {
protected:
    // Test images first; the built-in ones stay behind them.
    TitlesDrawingTest() {
        QDir::setSearchPaths(QLatin1String(kTitleImageSearchPath), {images_.path()});
    }
    ~TitlesDrawingTest() override {
        QDir::setSearchPaths(QLatin1String(kTitleImageSearchPath), saved_);
    }

    void MakeImage(const char *name, QSize size, QColor colour = Qt::red) {
        QImage image(size, QImage::Format_ARGB32);
        image.fill(colour);
        ASSERT_TRUE(image.save(images_.filePath(QLatin1String(name)), "PNG"));
    }
    static QImage Painted(const ReadyMenu *title) {
        return title->window->grab().toImage().convertToFormat(QImage::Format_ARGB32);
    }
    // The pixels holding anything more than transparency.
    static QRect PaintedArea(const QImage &image) {
        QRect area;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (qAlpha(image.pixel(x, y)) != 0)
                    area |= QRect(x, y, 1, 1);
        return area;
    }

    const QStringList saved_ = QDir::searchPaths(QLatin1String(kTitleImageSearchPath));
    QTemporaryDir images_;
};

TEST_F(TitlesDrawingTest, TheColourImageIsCentredByTheUnsignedShiftRuleAtHalfStrength) {
    ReadyMenu *title = AddTitle(kSideLeft);
    // In the area 10..45 across, 0..22 down: x = (55 - w) >> 1, y = (22 - h) >> 1.
    const std::pair<QSize, QRect> sizes[] = {
        {{20, 16}, {17, 3, 20, 16}},
        {{40, 16}, {7, 3, 38, 16}},
        {{55, 22}, {0, 0, 45, 22}},
        {{56, 16}, {}},
        {{20, 23}, {}}, // wrapped round, out of sight
    };
    for (const auto &[size, area] : sizes) {
        MakeImage("green.png", size);
        appleMenuSettings.iconColour = kColourGreen;
        EXPECT_EQ(PaintedArea(Painted(title)), area) << size.width() << "x" << size.height();
    }
    MakeImage("green.png", {20, 16});
    EXPECT_NEAR(qAlpha(Painted(title).pixel(20, 10)), 128, 2);
    // Any other colour, or a title of another kind, shows no image.
    appleMenuSettings.iconColour = FourCC("pink");
    EXPECT_TRUE(PaintedArea(Painted(title)).isEmpty());
    appleMenuSettings.iconColour = kColourGreen;
    title->menuSpec->titleKind = kTitleFrontApplication;
    EXPECT_TRUE(PaintedArea(Painted(title)).isEmpty());
}

TEST_F(TitlesDrawingTest, AnOpenMenuShowsTheSelectedLookAndTheHighlight) {
    appleMenuSettings.iconColour = kColourBlue;
    MakeImage("white.png", {30, 20}, Qt::white);
    MakeImage("blue.png", {10, 10}, Qt::blue);
    ReadyMenu *title = AddTitle(kSideLeft);
    pulledReadyMenu = title;
    const QImage painted = Painted(title);
    // The highlight at full strength at (12, 1); the blue image at half over it at (22, 6).
    EXPECT_EQ(painted.pixel(12, 1), qRgb(255, 255, 255));
    EXPECT_EQ(painted.pixel(25, 9), qRgb(128, 128, 255));
    EXPECT_EQ(qAlpha(painted.pixel(2, 2)), 255) << "the menu-bar look fills the window";
    pulledReadyMenu = nullptr;
}

TEST_F(TitlesDrawingTest, WithoutACompositorTheTitleIsOpaqueInThePanelsColours) {
    appleMenuSettings.iconColour = kColourRed;
    MakeImage("red.png", {20, 16}, QColor(255, 0, 0));
    ReadyMenu *title = AddTitle(kSideLeft);
    QImage panel(1, 22, QImage::Format_RGB32);
    for (int y = 0; y < 22; ++y)
        panel.setPixel(0, y, y < 11 ? qRgb(10, 200, 30) : qRgb(40, 40, 160));
    titleWindows.panel = panel;
    titleWindows.compositing = false;
    titleWindows.changed(); // the compositor stops
    QImage painted = Painted(title);
    EXPECT_EQ(painted.pixel(0, 0), qRgb(10, 200, 30));
    EXPECT_EQ(painted.pixel(44, 21), qRgb(40, 40, 160));
    EXPECT_NEAR(qRed(painted.pixel(20, 5)), 0.8 * 255 + 0.2 * 10, 3) << "the image at 0.8";
    titleWindows.compositing = true; // it starts again
    titleWindows.changed();
    EXPECT_EQ(qAlpha(Painted(title).pixel(0, 0)), 0);
}

TEST_F(TitlesDrawingTest, BuiltInImagesAreDrawnAfreshAtOneAndAHalf) {
    QDir::setSearchPaths(QLatin1String(kTitleImageSearchPath), {QStringLiteral(":/images")});
    // At 1.5x the source is drawn at 1.5x on whole device pixels, not the 2x image scaled.
    QImage screen(68, 33, QImage::Format_ARGB32_Premultiplied);
    screen.setDevicePixelRatio(1.5);
    screen.fill(Qt::transparent);
    const Rect area{0, 10, 22, 45};
    QPainter painter(&screen);
    DrawCenteredPNGPicture(&painter, QStringLiteral("rainbow.png"), &area, 1.0f);
    painter.end();
    QImage expected(QSize(30, 27), QImage::Format_ARGB32_Premultiplied);
    expected.fill(Qt::transparent);
    QPainter render(&expected);
    render.setRenderHint(QPainter::Antialiasing);
    QSvgRenderer(QStringLiteral(":/images/rainbow.svg")).render(&render);
    render.end();
    expected.setDevicePixelRatio(1.5);
    // (55 - 20) >> 1 = 17 and (22 - 18) >> 1 = 2: in device pixels 25 and 3.
    EXPECT_EQ(screen.copy(QRect(QPoint(25, 3), expected.size())), expected);
}

std::unique_ptr<QMimeData> UriList(const QList<QByteArray> &paths) {
    QByteArray list;
    for (const QByteArray &path : paths)
        list += (path.startsWith('/') ? "file://" + path.toPercentEncoding("/") : path) + "\r\n";
    auto data = std::make_unique<QMimeData>();
    data->setData(QStringLiteral("text/uri-list"), list);
    return data;
}

class TitleDropsTest : public TitlesTest {
protected:
    void SetUp() override {
        TitlesTest::SetUp();
        title = AddTitle(kSideLeft);
        title->menuSpec->folder = FSSpec{menuFolder.path()};
        for (const char *folder : {"one", "two", "three"}) {
            items.mkdir(folder);
            items.touch(QByteArray(folder) + "/report.pdf");
            reports.append(items.at(QByteArray(folder) + "/report.pdf"));
        }
    }
    void TearDown() override {
        DestroyFolderCachedMenu(nullptr);
        TitlesTest::TearDown();
    }

    TitleWindow *window() const { return static_cast<TitleWindow *>(title->window); }
    // Enters and moves inside the window as a drag source does; the action answered.
    Qt::DropAction Hover(const QMimeData *data, Qt::DropActions actions = kAll) {
        QDragEnterEvent enter(QPoint(20, 10), actions, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window(), &enter);
        QDragMoveEvent move(QPoint(21, 10), actions, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window(), &move);
        return enter.isAccepted() && move.isAccepted() ? move.dropAction() : Qt::IgnoreAction;
    }
    // Drops after entering, which makes the window the drag's target.
    Qt::DropAction Drop(const QMimeData *data, Qt::DropActions actions = kAll) {
        Hover(data, actions);
        QDropEvent drop(QPointF(20, 10), actions, data, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(window(), &drop);
        return drop.isAccepted() ? drop.dropAction() : Qt::IgnoreAction;
    }

    static constexpr Qt::DropActions kAll = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
    Folder menuFolder;
    Folder items;
    QList<QByteArray> reports;
    ReadyMenu *title = nullptr;
};

TEST_F(TitleDropsTest, ATitleTakesOnlyLocalFilesAndNeverAMove) {
    const auto files = UriList(reports);
    EXPECT_EQ(Hover(files.get()), Qt::LinkAction);
    EXPECT_EQ(window()->dragHighlight(), QRegion(QRect(0, 0, 45, 22)));
    EXPECT_EQ(Hover(files.get(), Qt::CopyAction | Qt::MoveAction), Qt::CopyAction);
    EXPECT_EQ(Hover(files.get(), Qt::MoveAction), Qt::IgnoreAction) << "it would delete the file";

    const auto mixed = UriList({items.at("one"), "file://elsewhere.example" + items.at("two")});
    auto text = std::make_unique<QMimeData>();
    text->setText(QStringLiteral("file:///tmp/a"));
    for (const QMimeData *refused : {mixed.get(), text.get()}) {
        EXPECT_EQ(Drop(refused), Qt::IgnoreAction);
        EXPECT_TRUE(window()->dragHighlight().isEmpty()) << "refused: no highlight";
    }
    title->menuSpec->contents = kContentsProcesses; // a title of no folder takes nothing
    EXPECT_EQ(Drop(files.get()), Qt::IgnoreAction);
    title->menuSpec->contents = kContentsFolder;
    EXPECT_EQ(Drop(UriList({}).get()), Qt::LinkAction) << "no items: taken, nothing made";
    EXPECT_TRUE(menuFolder.enumerationOrder().isEmpty());
}

TEST_F(TitleDropsTest, EachItemBecomesALinkInOrderAndTheCachedMenuIsDropped) {
    ASSERT_EQ(InitializeFolderCachedMenu(title), noErr);
    const QList<QByteArray> odd{"spaces and #%25", "two\nlines", "not utf-8 \xff\xfe",
                                QByteArray(255, 'n')};
    // Addresses of this machine, by any of its names.
    QList<QByteArray> paths{reports[0], "file://localhost" + reports[1],
                            "FILE://" + QSysInfo::machineHostName().toUtf8() + reports[2]};
    for (const QByteArray &name : odd) {
        items.touch(name);
        paths.append(items.at(name));
    }
    EXPECT_EQ(Drop(UriList(paths).get()), Qt::LinkAction);
    // Three items of one name: the numbering shows the order they were linked in.
    EXPECT_EQ(ReadLink(menuFolder.at("report.pdf")), reports[0]);
    EXPECT_EQ(ReadLink(menuFolder.at("report (2).pdf")), reports[1]);
    EXPECT_EQ(ReadLink(menuFolder.at("report (3).pdf")), reports[2]);
    for (const QByteArray &name : odd)
        EXPECT_EQ(ReadLink(menuFolder.at(name)), items.at(name)) << name.toHex().constData();
    EXPECT_EQ(title->cachedMenu, nullptr) << "the next click lists the new links";
    EXPECT_TRUE(window()->dragHighlight().isEmpty());
}

TEST_F(TitleDropsTest, AFailureStopsTheDropWithItsStatusAndKeepsTheEarlierLinks) {
    QByteArray tooLong = "/"; // a link to a path longer than any the system takes
    while (tooLong.size() <= PATH_MAX)
        tooLong += "deep/";
    const Drag files = DragFromMimeData(UriList(reports).get());
    Drag failing = files;
    failing.items[1] = DragFromMimeData(UriList({tooLong}).get()).items[0];
    ASSERT_EQ(InitializeFolderCachedMenu(title), noErr);
    EXPECT_EQ(MenuDragReceiveHandler(title->window, title, failing), bdNamErr);
    EXPECT_EQ(menuFolder.enumerationOrder(), QList<QByteArray>{"report.pdf"});
    EXPECT_EQ(title->cachedMenu, nullptr) << "dropped after the first link already";
}

} // namespace
