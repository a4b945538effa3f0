// A drag source for the drop test: drags a URI list of the addresses given on
// its command line (written as given, percent escapes and all), offering a
// copy, a move or a link and proposing a move, as file managers do. Prints its
// window id once shown, then "dropped ACTION" (copy, move, link or none).
#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QPixmap>
#include <QWidget>

#include <cstdio>

namespace {

class DragSource final : public QWidget {
public:
    explicit DragSource(QByteArray uris) : uris_(std::move(uris)) {}

protected:
    void mousePressEvent(QMouseEvent *event) override { pressedAt_ = event->position().toPoint(); }
    void mouseMoveEvent(QMouseEvent *event) override {
        if (pressedAt_.isNull() || (event->position().toPoint() - pressedAt_).manhattanLength() <
                                       QApplication::startDragDistance())
            return;
        pressedAt_ = QPoint();
        auto *drag = new QDrag(this);
        auto *data = new QMimeData;
        data->setData(QStringLiteral("text/uri-list"), uris_);
        drag->setMimeData(data);
        // The drag's picture rides well below and right of the pointer, clear
        // of the title the test looks at.
        QPixmap picture(16, 16);
        picture.fill(Qt::darkGreen);
        drag->setPixmap(picture);
        drag->setHotSpot(QPoint(-40, -40));
        const Qt::DropAction result =
            drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, Qt::MoveAction);
        std::printf("dropped %s\n", result == Qt::CopyAction   ? "copy"
                                    : result == Qt::MoveAction ? "move"
                                    : result == Qt::LinkAction ? "link"
                                                               : "none");
        std::fflush(stdout);
    }

private:
    QByteArray uris_;
    QPoint pressedAt_;
};

} // namespace

int main(int argc, char *argv[]) {
    QApplication application(argc, argv);
    QByteArray uris;
    for (int i = 1; i < argc; ++i)
        uris += QByteArray(argv[i]) + "\r\n";
    DragSource window(uris);
    window.setWindowTitle(QStringLiteral("test drag source"));
    window.setGeometry(400, 300, 200, 120);
    window.show();
    std::printf("%llu\n", static_cast<unsigned long long>(window.winId()));
    std::fflush(stdout);
    return QApplication::exec();
}
