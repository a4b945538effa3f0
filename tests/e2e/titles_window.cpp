// A window for the title tests: "dock" is a panel across the top of the
// screen, "normal" an ordinary window. Prints its window id once shown, then
// obeys lines on standard input: "fullscreen", "normal", "activate", "quit".
#include <xcb/xcb.h>

#include <QApplication>
#include <QScreen>
#include <QSocketNotifier>
#include <QTextStream>
#include <QWidget>

#include <cstdio>
#include <unistd.h>

int main(int argc, char *argv[]) {
    QApplication application(argc, argv);
    const bool dock = argc > 1 && qstrcmp(argv[1], "dock") == 0;

    QWidget window;
    window.setWindowTitle(dock ? QStringLiteral("test dock") : QStringLiteral("test window"));
    QPalette palette = window.palette();
    palette.setColor(QPalette::Window, dock ? QColor(255, 0, 255) : QColor(0, 255, 255));
    window.setPalette(palette);
    window.setAutoFillBackground(true);
    if (dock) {
        window.setWindowFlag(Qt::FramelessWindowHint);
        window.setGeometry(0, 0, QGuiApplication::primaryScreen()->geometry().width(), 30);
        // A dock for the window manager, said before the window is mapped.
        auto *x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
        xcb_connection_t *connection = x11->connection();
        auto atom = [&](const char *name) {
            xcb_intern_atom_reply_t *reply = xcb_intern_atom_reply(
                connection, xcb_intern_atom(connection, 0, strlen(name), name), nullptr);
            const xcb_atom_t value = reply->atom;
            free(reply);
            return value;
        };
        const xcb_atom_t type = atom("_NET_WM_WINDOW_TYPE_DOCK");
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window.winId(),
                            atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, 32, 1, &type);
    } else {
        window.setGeometry(200, 200, 300, 200);
    }
    window.show();
    std::printf("%llu\n", static_cast<unsigned long long>(window.winId()));
    std::fflush(stdout);

    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        char line[64] = {};
        const ssize_t got = ::read(STDIN_FILENO, line, sizeof line - 1);
        const QByteArray command = QByteArray(line, got > 0 ? int(got) : 0).trimmed();
        if (got <= 0 || command == "quit")
            QApplication::quit();
        else if (command == "fullscreen")
            window.showFullScreen();
        else if (command == "normal")
            window.showNormal();
        else if (command == "activate")
            window.activateWindow();
    });
    return QApplication::exec();
}
