// How a title looks, checked on the window as painted: images centred by the
// unsigned-shift rule, the opacities, the selected look, the opaque look in a
// panel's colours while no compositor runs, and the built-in images at 1.5x.
#include "tests/widget/titles_fixture.h"

#include "titles/drawreadymenu.h"

#include <QDir>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>
#include <QTemporaryDir>

namespace {

class TitlesDrawingTest : public TitlesTest {
protected:
    TitlesDrawingTest() {
        // Test images first; the built-in ones stay behind them.
        saved_ = QDir::searchPaths(QLatin1String(kTitleImageSearchPath));
        QDir::setSearchPaths(QLatin1String(kTitleImageSearchPath), {images_.path()});
    }
    ~TitlesDrawingTest() override {
        QDir::setSearchPaths(QLatin1String(kTitleImageSearchPath), saved_);
    }

    void MakeImage(const char *name, int width, int height, QColor colour = Qt::red) {
        QImage image(width, height, QImage::Format_ARGB32);
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

    QTemporaryDir images_;
    QStringList saved_;
};

TEST_F(TitlesDrawingTest, ImagesAreCentredByTheUnsignedShiftRule) {
    appleMenuSettings.iconColour = kColourGreen;
    ReadyMenu *title = AddTitle(kSideLeft);
    // 20 x 16 in the area 10..45 across, 0..22 down: (55 - 20) >> 1, (22 - 16) >> 1.
    MakeImage("green.png", 20, 16);
    const QImage painted = Painted(title);
    EXPECT_EQ(PaintedArea(painted), QRect(17, 3, 20, 16));
    EXPECT_NEAR(qAlpha(painted.pixel(20, 10)), 128, 2) << "half strength";
    // Wider than the area but not than both edges together: it overhangs.
    MakeImage("green.png", 40, 16);
    EXPECT_EQ(PaintedArea(Painted(title)), QRect(7, 3, 38, 16));
    MakeImage("green.png", 55, 22);
    EXPECT_EQ(PaintedArea(Painted(title)), QRect(0, 0, 45, 22));
    // Wider than 55 or taller than 22: the position wraps round, out of sight.
    for (const QSize size : {QSize(56, 16), QSize(20, 23)}) {
        MakeImage("green.png", size.width(), size.height());
        EXPECT_TRUE(PaintedArea(Painted(title)).isEmpty()) << size.width() << "x" << size.height();
    }
}

TEST_F(TitlesDrawingTest, TheColourSettingChoosesTheImageOfAColourTitleOnly) {
    ReadyMenu *title = AddTitle(kSideLeft);
    const std::pair<OSType, const char *> colours[] = {{kColourBlue, "blue.png"},
                                                       {kColourRed, "red.png"},
                                                       {kColourGreen, "green.png"},
                                                       {kColourGrey, "grey.png"},
                                                       {kColourRainbow, "rainbow.png"}};
    for (const auto &[colour, file] : colours) {
        appleMenuSettings.iconColour = colour;
        EXPECT_EQ(ReadyMenuIconName(title), QLatin1String(file));
    }
    MakeImage("red.png", 20, 16);
    appleMenuSettings.iconColour = FourCC("pink");
    EXPECT_TRUE(PaintedArea(Painted(title)).isEmpty());
    appleMenuSettings.iconColour = kColourRed;
    title->menuSpec->titleKind = kTitleFrontApplication;
    EXPECT_TRUE(PaintedArea(Painted(title)).isEmpty());
}

TEST_F(TitlesDrawingTest, AnOpenMenuShowsTheSelectedLookAndTheHighlight) {
    appleMenuSettings.iconColour = kColourBlue;
    MakeImage("white.png", 30, 20, Qt::white);
    MakeImage("blue.png", 10, 10, Qt::blue);
    ReadyMenu *title = AddTitle(kSideLeft);
    pulledReadyMenu = title;
    const QImage painted = Painted(title);
    // The highlight at full strength at (12, 1); the blue image at half over it at (22, 6).
    EXPECT_EQ(painted.pixel(12, 1), qRgb(255, 255, 255));
    EXPECT_NEAR(qRed(painted.pixel(25, 9)), 128, 2);
    EXPECT_NEAR(qBlue(painted.pixel(25, 9)), 255, 2);
    EXPECT_EQ(qAlpha(painted.pixel(2, 2)), 255) << "the menu-bar look fills the window";
    title->menuSpec->titleKind = kTitleFrontApplication;
    EXPECT_EQ(Painted(title).pixel(25, 9), qRgb(255, 255, 255)) << "the highlight alone";
    pulledReadyMenu = nullptr;
    title->menuSpec->titleKind = kTitleColourPicture;
    EXPECT_EQ(PaintedArea(Painted(title)), QRect(22, 6, 10, 10));
}

TEST_F(TitlesDrawingTest, WithoutACompositorTheTitleIsOpaqueInThePanelsColours) {
    appleMenuSettings.iconColour = kColourRed;
    MakeImage("red.png", 20, 16, QColor(255, 0, 0));
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

    titleWindows.panel = QImage(); // no panel: the style's own bar, opaque too
    titleWindows.changed();
    painted = Painted(title);
    for (const QPoint corner : {QPoint(0, 0), QPoint(44, 0), QPoint(0, 21), QPoint(44, 21)})
        EXPECT_EQ(qAlpha(painted.pixel(corner)), 255);
    titleWindows.compositing = true; // it starts again
    titleWindows.changed();
    EXPECT_EQ(qAlpha(Painted(title).pixel(0, 0)), 0);
}

TEST_F(TitlesDrawingTest, BuiltInImagesFitTheAreaAndAreDrawnAfreshAtOneAndAHalf) {
    QDir::setSearchPaths(QLatin1String(kTitleImageSearchPath), {QStringLiteral(":/images")});
    for (const char *name : {"blue", "red", "green", "grey", "rainbow", "white"}) {
        const QImage one(QStringLiteral(":/images/%1.png").arg(QLatin1String(name)));
        EXPECT_LE(one.width(), 35) << name;
        EXPECT_LE(one.height(), 22) << name;
        EXPECT_EQ(QImage(QStringLiteral(":/images/%1@2x.png").arg(QLatin1String(name))).size(),
                  one.size() * 2)
            << name;
    }
    // At 1.5x the source is drawn at 1.5x on whole device pixels, not the 2x image scaled.
    QImage screen(68, 33, QImage::Format_ARGB32_Premultiplied);
    screen.setDevicePixelRatio(1.5);
    screen.fill(Qt::transparent);
    const Rect area{0, 10, 22, 45};
    QPainter painter(&screen);
    DrawCenteredPNGPicture(&painter, QStringLiteral("rainbow.png"), &area, 1.0f);
    painter.end();
    QSvgRenderer source(QStringLiteral(":/images/rainbow.svg"));
    QImage expected(source.defaultSize() * 3 / 2, QImage::Format_ARGB32_Premultiplied);
    expected.fill(Qt::transparent);
    QPainter render(&expected);
    render.setRenderHint(QPainter::Antialiasing);
    source.render(&render);
    render.end();
    expected.setDevicePixelRatio(1.5);
    // (55 - 20) >> 1 = 17 and (22 - 18) >> 1 = 2, in device pixels 25 and 3.
    EXPECT_EQ(screen.copy(QRect(QPoint(25, 3), expected.size())), expected);
}

} // namespace
