// How a title looks: images centred in its area by the unsigned-shift rule,
// the opacities, the selected look and the opaque look without a compositor.
// Checked on the window as painted.
#include "tests/widget/titles_fixture.h"

#include "titles/drawreadymenu.h"

#include <QDir>
#include <QImage>
#include <QPixmap>
#include <QTemporaryDir>

namespace {

class TitlesDrawingTest : public TitlesTest {
protected:
    explicit TitlesDrawingTest(bool compositing = true) : TitlesTest(compositing) {
        // Test images come first; the built-in ones stay behind them.
        saved_ = QDir::searchPaths(QLatin1String(kTitleImageSearchPath));
        QDir::setSearchPaths(QLatin1String(kTitleImageSearchPath), {images_.path()});
    }
    ~TitlesDrawingTest() override {
        QDir::setSearchPaths(QLatin1String(kTitleImageSearchPath), saved_);
    }

    // A solid image of one colour under `name`.
    void MakeImage(const char *name, int width, int height, QColor colour = Qt::red) {
        QImage image(width, height, QImage::Format_ARGB32);
        image.fill(colour);
        ASSERT_TRUE(image.save(images_.filePath(QLatin1String(name)), "PNG"));
    }

    static QImage Painted(const ReadyMenu *title) {
        return title->window->grab().toImage().convertToFormat(QImage::Format_ARGB32);
    }

    // The columns and rows of `image` holding anything more than transparency.
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
    QImage painted = Painted(title);
    EXPECT_EQ(PaintedArea(painted), QRect(17, 3, 20, 16));
    // Drawn at half strength over a transparent window.
    EXPECT_NEAR(qAlpha(painted.pixel(20, 10)), 128, 2);

    // Wider than the area but narrower than both edges together: overhangs it.
    MakeImage("green.png", 40, 16);
    EXPECT_EQ(PaintedArea(Painted(title)), QRect(7, 3, 38, 16));

    // Wider than 55 or taller than 22: the position wraps round and nothing shows.
    MakeImage("green.png", 56, 16);
    EXPECT_TRUE(PaintedArea(Painted(title)).isEmpty());
    MakeImage("green.png", 20, 23);
    EXPECT_TRUE(PaintedArea(Painted(title)).isEmpty());
    // One pixel short of wrapping still shows.
    MakeImage("green.png", 55, 22);
    EXPECT_EQ(PaintedArea(Painted(title)), QRect(0, 0, 45, 22));
}

TEST_F(TitlesDrawingTest, ColourSettingChoosesTheImage) {
    const struct {
        OSType colour;
        const char *file;
    } colours[] = {{kColourBlue, "blue.png"},
                   {kColourRed, "red.png"},
                   {kColourGreen, "green.png"},
                   {kColourGrey, "grey.png"},
                   {kColourRainbow, "rainbow.png"}};
    ReadyMenu *title = AddTitle(kSideLeft);
    for (const auto &[colour, file] : colours) {
        appleMenuSettings.iconColour = colour;
        EXPECT_EQ(ReadyMenuIconName(title), QLatin1String(file));
    }
    // Any other colour, or a title of another kind, draws no image at all.
    MakeImage("white.png", 30, 20);
    appleMenuSettings.iconColour = FourCC("pink");
    EXPECT_TRUE(ReadyMenuIconName(title).isEmpty());
    EXPECT_TRUE(PaintedArea(Painted(title)).isEmpty());

    appleMenuSettings.iconColour = kColourRed;
    MakeImage("red.png", 20, 16);
    title->menuSpec->titleKind = kTitleFrontApplication;
    EXPECT_TRUE(ReadyMenuIconName(title).isEmpty());
    EXPECT_TRUE(PaintedArea(Painted(title)).isEmpty());
}

TEST_F(TitlesDrawingTest, OpenMenuShowsTheSelectedLookAndTheHighlight) {
    appleMenuSettings.iconColour = kColourBlue;
    MakeImage("white.png", 30, 20, Qt::white);
    MakeImage("blue.png", 10, 10, Qt::blue);
    ReadyMenu *title = AddTitle(kSideLeft);

    pulledReadyMenu = title;
    const QImage painted = Painted(title);
    pulledReadyMenu = nullptr;
    // The highlight at full strength: (55 - 30) >> 1 = 12, (22 - 20) >> 1 = 1.
    EXPECT_EQ(painted.pixel(12, 1), qRgb(255, 255, 255));
    EXPECT_EQ(painted.pixel(41, 20), qRgb(255, 255, 255));
    // The coloured image at half strength over it: (55 - 10) >> 1 = 22, 6.
    const QRgb mixed = painted.pixel(25, 9);
    EXPECT_NEAR(qRed(mixed), 128, 2);
    EXPECT_NEAR(qBlue(mixed), 255, 2);
    // The menu-bar look fills the rest of the window.
    EXPECT_EQ(qAlpha(painted.pixel(2, 2)), 255);

    // A front-application title shows the selected look and the highlight alone.
    title->menuSpec->titleKind = kTitleFrontApplication;
    pulledReadyMenu = title;
    const QImage other = Painted(title);
    pulledReadyMenu = nullptr;
    EXPECT_EQ(other.pixel(25, 9), qRgb(255, 255, 255));

    // Closed again: only the coloured image, on transparency.
    title->menuSpec->titleKind = kTitleColourPicture;
    EXPECT_EQ(PaintedArea(Painted(title)), QRect(22, 6, 10, 10));
}

class TitlesOpaqueDrawingTest : public TitlesDrawingTest {
protected:
    TitlesOpaqueDrawingTest() : TitlesDrawingTest(false) {}
};

TEST_F(TitlesOpaqueDrawingTest, WithoutCompositorTheTitleIsOpaqueAndTheImageStronger) {
    appleMenuSettings.iconColour = kColourRed;
    MakeImage("red.png", 20, 16, QColor(255, 0, 0));
    ReadyMenu *title = AddTitle(kSideLeft);
    const QImage painted = Painted(title);
    for (const QPoint corner : {QPoint(0, 0), QPoint(44, 0), QPoint(0, 21), QPoint(44, 21)})
        EXPECT_EQ(qAlpha(painted.pixel(corner)), 255);
    // 0.8 of the image over the bar's own colour.
    const QRgb bar = painted.pixel(12, 10);
    const QRgb icon = painted.pixel(20, 10);
    EXPECT_NEAR(qRed(icon), 0.8 * 255 + 0.2 * qRed(bar), 3);
    EXPECT_NEAR(qGreen(icon), 0.2 * qGreen(bar), 3);
}

TEST_F(TitlesDrawingTest, BuiltInImagesFitTheTitleArea) {
    QDir::setSearchPaths(QLatin1String(kTitleImageSearchPath), {QStringLiteral(":/images")});
    for (const char *name : {"blue", "red", "green", "grey", "rainbow", "white"}) {
        const QImage one(QStringLiteral(":/images/%1.png").arg(QLatin1String(name)));
        const QImage two(QStringLiteral(":/images/%1@2x.png").arg(QLatin1String(name)));
        ASSERT_FALSE(one.isNull()) << name;
        EXPECT_LE(one.width(), 35) << name;
        EXPECT_LE(one.height(), 22) << name;
        EXPECT_EQ(two.size(), one.size() * 2) << name;
    }
    appleMenuSettings.iconColour = kColourRainbow;
    ReadyMenu *title = AddTitle(kSideLeft);
    const QRect area = PaintedArea(Painted(title));
    EXPECT_FALSE(area.isEmpty());
    EXPECT_TRUE(QRect(10, 0, 35, 22).contains(area));
}

} // namespace
