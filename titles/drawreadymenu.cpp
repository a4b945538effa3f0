#include "titles/drawreadymenu.h"

#include "core/settings.h"
#include "titles/readymenu.h"
#include "titles/titlewindow.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionMenuItem>
#include <QSvgRenderer>

#include <cmath>
#include <cstdint>

namespace {

QString ColourIconName(OSType colour) {
    switch (colour) {
    case kColourBlue:
        return QStringLiteral("blue.png");
    case kColourRed:
        return QStringLiteral("red.png");
    case kColourGreen:
        return QStringLiteral("green.png");
    case kColourGrey:
        return QStringLiteral("grey.png");
    case kColourRainbow:
        return QStringLiteral("rainbow.png");
    default:
        return {};
    }
}

// The image at its natural size, from the first folder of the search path that
// has it. At 2x the "@2x" drawing serves; at any other density above 1 it is
// drawn afresh from its SVG source where the folder has one, so that it stays
// crisp at 1.5x as at 2x.
QImage LoadTitleImage(const QString &name, qreal deviceRatio) {
    for (const QString &folder : QDir::searchPaths(QLatin1String(kTitleImageSearchPath))) {
        const QDir dir(folder);
        if (!dir.exists(name))
            continue;
        const QString base = QFileInfo(name).completeBaseName();
        if (deviceRatio > 1.0 && !qFuzzyCompare(deviceRatio, 2.0)) {
            QSvgRenderer source(dir.filePath(base + QLatin1String(".svg")));
            if (source.isValid()) {
                QImage drawn((QSizeF(source.defaultSize()) * deviceRatio).toSize(),
                             QImage::Format_ARGB32_Premultiplied);
                drawn.fill(Qt::transparent);
                QPainter painter(&drawn);
                painter.setRenderHint(QPainter::Antialiasing);
                source.render(&painter);
                painter.end();
                drawn.setDevicePixelRatio(deviceRatio);
                return drawn;
            }
        }
        if (deviceRatio > 1.0) {
            QImage large(dir.filePath(base + QLatin1String("@2x.png")));
            if (!large.isNull()) {
                large.setDevicePixelRatio(2.0);
                return large;
            }
        }
        return QImage(dir.filePath(name));
    }
    return {};
}

// The style's own menu-bar look: the bar across the window and the menu title
// in the title's area, selected while its menu is open.
void DrawMenuTitleBackground(QPainter *context, const QWidget *window, const Rect &titleRect,
                             bool selected) {
    QStyle *style = window->style();
    QStyleOptionMenuItem bar;
    bar.initFrom(window);
    bar.rect = QRect(0, 0, window->width(), window->height());
    bar.menuRect = bar.rect;
    bar.state = QStyle::State_Enabled;
    if (!menuBarBackground.isNull()) {
        // The panel's own rows across the window; the style's item only when
        // selected, since it paints its own background.
        context->drawImage(QRectF(bar.rect), menuBarBackground);
        if (!selected)
            return;
    } else {
        style->drawControl(QStyle::CE_MenuBarEmptyArea, &bar, context, window);
    }

    QStyleOptionMenuItem item = bar;
    item.menuItemType = QStyleOptionMenuItem::Normal;
    item.rect = QRect(titleRect.left, titleRect.top, titleRect.right - titleRect.left,
                      titleRect.bottom - titleRect.top);
    item.state = QStyle::State_Enabled;
    if (selected)
        item.state |= QStyle::State_Selected | QStyle::State_Sunken | QStyle::State_HasFocus;
    style->drawControl(QStyle::CE_MenuBarItem, &item, context, window);
}

void PaintReadyMenu(QPainter *context, ReadyMenu *title) {
    const QString iconName = ReadyMenuIconName(title);
    const QWidget *window = title->window;

    context->save();
    context->setCompositionMode(QPainter::CompositionMode_Clear);
    context->fillRect(QRect(0, 0, window->width(), window->height()), Qt::transparent);
    context->restore();

    const bool selected = title == pulledReadyMenu;
    if (selected || !system105OrLater) {
        context->save();
        DrawMenuTitleBackground(context, window, title->titleRect, selected);
        context->restore();
        if (selected)
            DrawCenteredPNGPicture(context, QStringLiteral("white.png"), &title->titleRect, 1.0f);
    }
    DrawCenteredPNGPicture(context, iconName, &title->titleRect, system105OrLater ? 0.5f : 0.8f);
}

} // namespace

QString ReadyMenuIconName(const ReadyMenu *title) {
    if (title->menuSpec == nullptr || title->menuSpec->titleKind != kTitleColourPicture)
        return {};
    return ColourIconName(appleMenuSettings.iconColour);
}

void DrawReadyMenu(ReadyMenu *title) {
    auto *window = static_cast<TitleWindow *>(title->window);
    if (window == nullptr)
        return;
    if (!window->painting()) {
        // Painting happens only inside the window's paint event: ask for one now.
        window->repaint();
        return;
    }
    QPainter context(window);
    if (!context.isActive())
        return;
    PaintReadyMenu(&context, title);
}

void DrawCenteredPNGPicture(QPainter *context, const QString &name, const Rect *area, float alpha) {
    if (name.isEmpty())
        return;
    const QImage image = LoadTitleImage(name, context->device()->devicePixelRatioF());
    if (image.isNull())
        return;
    const QSize size = image.deviceIndependentSize().toSize();
    const auto iw = std::uint32_t(size.width());
    const auto ih = std::uint32_t(size.height());
    // Unsigned on purpose: an image wider (or taller) than both edges together
    // lands near 2^31, out of sight, rather than at a negative offset.
    const std::uint32_t x = (std::uint32_t(area->left + area->right) - iw) >> 1;
    const std::uint32_t y = (std::uint32_t(area->top + area->bottom) - ih) >> 1;
    // Off the edge of any window: nothing would show, and the raster engine
    // does not take coordinates this large.
    if (x > 0x7FFF || y > 0x7FFF)
        return;
    // On a whole device pixel, so that a 1.5x screen does not blur the image.
    const qreal ratio = image.devicePixelRatio();
    const QRectF target{std::floor(qreal(x) * ratio) / ratio, std::floor(qreal(y) * ratio) / ratio,
                        qreal(iw), qreal(ih)};
    context->save();
    context->setOpacity(alpha);
    context->drawImage(target, image);
    context->restore();
}
