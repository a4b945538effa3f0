// The window of one title: frameless, above panels, never focused; its paint,
// show and mouse events go to MenuWindowCarbonEvent.
#pragma once

#include <QWidget>

class TitleWindow final : public QWidget {
public:
    explicit TitleWindow(bool translucent);
    // True inside the window's paint event, where drawing goes straight to the window.
    bool painting() const { return painting_; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    bool painting_ = false;
};
