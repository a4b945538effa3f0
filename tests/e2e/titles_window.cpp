// A window for the title tests, printing its id once shown: "dock", a magenta
// panel; "normal", obeying "fullscreen" on standard input; "drag URI..." (or
// "files"), dragging those addresses as a file manager does (copy, move or
// link; a move proposed), printing "dropped link" or "dropped other";
// "target", printing "over" when addresses are dragged in and "took" and
// the addresses when they are dropped.
#include <QApplication>
#include <QDrag>
#include <QDropEvent>
#include <QMimeData>
#include <QProcess>
#include <QScreen>
#include <QSocketNotifier>
#include <QWidget>

#include <cstdio>
#include <unistd.h>

namespace {

class Window final : public QWidget {
public:
    QByteArray uris;

protected:
    void dragEnterEvent(QDragEnterEvent *event) override {
        if (!event->mimeData()->hasFormat(QStringLiteral("text/uri-list")))
            return;
        std::printf("over\n");
        std::fflush(stdout);
        event->acceptProposedAction();
    }
    void dropEvent(QDropEvent *event) override {
        std::printf("took %s\n",
                    event->mimeData()->data(QStringLiteral("text/uri-list")).constData());
        std::fflush(stdout);
        event->acceptProposedAction();
    }
    void mouseMoveEvent(QMouseEvent *) override {
        if (uris.isEmpty())
            return;
        auto *drag = new QDrag(this);
        drag->setMimeData(new QMimeData);
        drag->mimeData()->setData(QStringLiteral("text/uri-list"), std::exchange(uris, {}));
        const Qt::DropAction done =
            drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, Qt::MoveAction);
        std::printf("dropped %s\n", done == Qt::LinkAction ? "link" : "other");
        std::fflush(stdout);
    }
};

} // namespace

int main(int argc, char *argv[]) {
    QApplication application(argc, argv);
    const QByteArray kind = argc > 1 ? argv[1] : "normal";
    Window window;
    for (int i = 2; i < argc; ++i)
        window.uris += QByteArray(argv[i]) + "\r\n";
    window.setPalette(QPalette(kind == "dock" ? QColor(255, 0, 255) : QColor(0, 255, 255)));
    window.setAutoFillBackground(true);
    window.setAcceptDrops(kind == "target");
    window.setGeometry(400, 300, 200, 120);
    if (kind == "dock") {
        window.setWindowFlag(Qt::FramelessWindowHint);
        window.setGeometry(0, 0, QGuiApplication::primaryScreen()->geometry().width(), 30);
        // A dock for the window manager, said before the window is mapped.
        QProcess::execute(
            QStringLiteral("xprop"),
            QStringLiteral("-id %1 -f _NET_WM_WINDOW_TYPE 32a -set _NET_WM_WINDOW_TYPE "
                           "_NET_WM_WINDOW_TYPE_DOCK")
                .arg(window.winId())
                .split(u' '));
    }
    window.show();
    std::printf("%llu\n", static_cast<unsigned long long>(window.winId()));
    std::fflush(stdout);

    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        char line[64] = {};
        if (::read(STDIN_FILENO, line, sizeof line - 1) <= 0)
            input.setEnabled(false);
        else if (QByteArray(line).startsWith("fullscreen"))
            window.showFullScreen();
    });
    return QApplication::exec();
}
