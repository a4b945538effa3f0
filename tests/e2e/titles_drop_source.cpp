// A drag source for the drop tests: "files URI..." drags a URI list of the
// given addresses (written as given, percent escapes and all), "text WORDS"
// drags plain text. Offers a copy, a move or a link, proposing a move, as file
// managers do. Prints its window id once shown, then "dropped ACTION" (copy,
// move, link or none) when a drag it started ends.
#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmap>
#include <QWidget>

#include <cstdio>

namespace {

class DragSource final : public QWidget {
public:
    explicit DragSource(QMimeData *(*makeData)()) : makeData_(makeData) {}

protected:
    void mousePressEvent(QMouseEvent *event) override {
        if (event->button() == Qt::LeftButton)
            pressedAt_ = event->position().toPoint();
    }
    void mouseMoveEvent(QMouseEvent *event) override {
        if (!(event->buttons() & Qt::LeftButton) || pressedAt_.isNull() ||
            (event->position().toPoint() - pressedAt_).manhattanLength() <
                QApplication::startDragDistance())
            return;
        pressedAt_ = QPoint();
        auto *drag = new QDrag(this);
        drag->setMimeData(makeData_());
        // The drag's picture rides well below and right of the pointer, clear of
        // the title the tests look at.
        QPixmap picture(16, 16);
        picture.fill(Qt::darkGreen);
        drag->setPixmap(picture);
        drag->setHotSpot(QPoint(-40, -40));
        const Qt::DropAction result =
            drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, Qt::MoveAction);
        const char *name = result == Qt::CopyAction   ? "copy"
                           : result == Qt::MoveAction ? "move"
                           : result == Qt::LinkAction ? "link"
                                                      : "none";
        std::printf("dropped %s\n", name);
        std::fflush(stdout);
    }

private:
    QMimeData *(*makeData_)();
    QPoint pressedAt_;
};

QByteArray payload;

QMimeData *UriList() {
    auto *data = new QMimeData;
    data->setData(QStringLiteral("text/uri-list"), payload);
    return data;
}

QMimeData *Text() {
    auto *data = new QMimeData;
    data->setText(QString::fromUtf8(payload));
    return data;
}

} // namespace

int main(int argc, char *argv[]) {
    QApplication application(argc, argv);
    const bool files = argc > 1 && qstrcmp(argv[1], "files") == 0;
    for (int i = 2; i < argc; ++i)
        payload += QByteArray(argv[i]) + (files ? "\r\n" : " ");

    DragSource window(files ? UriList : Text);
    window.setWindowTitle(QStringLiteral("test drag source"));
    QPalette palette = window.palette();
    palette.setColor(QPalette::Window, QColor(255, 255, 0));
    window.setPalette(palette);
    window.setAutoFillBackground(true);
    window.setGeometry(400, 300, 200, 120);
    window.show();
    std::printf("%llu\n", static_cast<unsigned long long>(window.winId()));
    std::fflush(stdout);
    return QApplication::exec();
}
