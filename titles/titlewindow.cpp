#include "titles/titlewindow.h"

#include "titles/titledrops.h"
#include "titles/titleevents.h"

#include <QMouseEvent>
#include <QPainter>

TitleWindow::TitleWindow()
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint |
                           Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus |
                           Qt::NoDropShadowWindowHint) {
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_X11DoNotAcceptFocus);
    setAttribute(Qt::WA_DeleteOnClose, false);
    setFocusPolicy(Qt::NoFocus);
    // Always with an alpha channel, so that a compositor starting or stopping
    // changes only how the title is painted: the panel shows through where
    // translucency works, and an opaque look covers the window where it does not.
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_NoSystemBackground);
    // Named apart from the program's dialogs, which carry the program's name.
    setWindowTitle(QStringLiteral("Kestrel Menu title"));
    // Files dropped on a title become links in its folder.
    setAcceptDrops(true);
}

void TitleWindow::paintEvent(QPaintEvent *) {
    painting_ = true;
    MenuWindowCarbonEvent({TitleEventKind::DrawContent, this, std::nullopt});
    painting_ = false;
    if (dragHighlight_.isEmpty())
        return;
    // The drop highlight over the title: a tint and a frame drawn inside its edge.
    QPainter context(this);
    QColor highlight = palette().color(QPalette::Active, QPalette::Highlight);
    context.setClipRegion(dragHighlight_);
    highlight.setAlphaF(0.35f);
    context.fillRect(dragHighlight_.boundingRect(), highlight);
    highlight.setAlphaF(1.0f);
    context.setPen(QPen(highlight, 2));
    context.setBrush(Qt::NoBrush);
    context.drawRect(QRectF(dragHighlight_.boundingRect()).adjusted(1, 1, -1, -1));
}

void TitleWindow::setDragHighlight(const QRegion &region) {
    if (region == dragHighlight_)
        return;
    dragHighlight_ = region;
    update();
}

void TitleWindow::showEvent(QShowEvent *) {
    MenuWindowCarbonEvent({TitleEventKind::Shown, this, std::nullopt});
}

void TitleWindow::mousePressEvent(QMouseEvent *event) {
    event->accept();
    MenuWindowCarbonEvent({TitleEventKind::MouseDown, this, event->globalPosition()});
}

void TitleWindow::dragEnterEvent(QDragEnterEvent *event) {
    TitleDragEnterEvent(this, event);
}

void TitleWindow::dragMoveEvent(QDragMoveEvent *event) {
    TitleDragMoveEvent(this, event);
}

void TitleWindow::dragLeaveEvent(QDragLeaveEvent *event) {
    TitleDragLeaveEvent(this, event);
}

void TitleWindow::dropEvent(QDropEvent *event) {
    TitleDropEvent(this, event);
}
