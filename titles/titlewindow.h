// The window of one title: frameless, above panels, never focused; its paint,
// show and mouse events go to MenuWindowCarbonEvent, its drag events to the
// title's drop handlers.
#pragma once

#include <QRegion>
#include <QWidget>

class TitleWindow final : public QWidget {
public:
    TitleWindow();
    // True inside the window's paint event, where drawing goes straight to the window.
    bool painting() const { return painting_; }
    // The part of the window that shows the drop highlight; empty for none.
    QRegion dragHighlight() const { return dragHighlight_; }
    void setDragHighlight(const QRegion &region);

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    bool painting_ = false;
    QRegion dragHighlight_;
};
