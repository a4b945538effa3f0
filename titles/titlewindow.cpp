#include "titles/titlewindow.h"

#include "titles/titleevents.h"

#include <QMouseEvent>

TitleWindow::TitleWindow(bool translucent)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint |
                           Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus |
                           Qt::NoDropShadowWindowHint) {
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_X11DoNotAcceptFocus);
    setAttribute(Qt::WA_DeleteOnClose, false);
    setFocusPolicy(Qt::NoFocus);
    // The panel shows through a title only where translucency works.
    setAttribute(Qt::WA_TranslucentBackground, translucent);
    setAttribute(Qt::WA_NoSystemBackground, translucent);
    // Named apart from the program's dialogs, which carry the program's name.
    setWindowTitle(QStringLiteral("Kestrel Menu title"));
}

void TitleWindow::paintEvent(QPaintEvent *) {
    painting_ = true;
    MenuWindowCarbonEvent({TitleEventKind::DrawContent, this, std::nullopt});
    painting_ = false;
}

void TitleWindow::showEvent(QShowEvent *) {
    MenuWindowCarbonEvent({TitleEventKind::Shown, this, std::nullopt});
}

void TitleWindow::mousePressEvent(QMouseEvent *event) {
    event->accept();
    MenuWindowCarbonEvent({TitleEventKind::MouseDown, this, event->globalPosition()});
}
