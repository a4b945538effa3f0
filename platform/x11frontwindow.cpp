#include "platform/x11frontwindow.h"

#include "platform/x11connection.h"

#include <QApplication>
#include <QCoreApplication>
#include <QTimer>
#include <QWidget>

#include <unistd.h>

namespace platform {

namespace {

std::int64_t WindowProcess(xcb_window_t window) {
    const auto pid = x11::ReadCardinals(window, x11::Atom("_NET_WM_PID"), XCB_ATOM_CARDINAL);
    return pid && !pid->empty() ? std::int64_t(pid->front()) : 0;
}

// The first window the window manager lists for `pid`.
xcb_window_t FirstWindowOf(std::int64_t pid) {
    const auto clients =
        x11::ReadCardinals(x11::RootWindow(), x11::Atom("_NET_CLIENT_LIST"), XCB_ATOM_WINDOW);
    if (!clients)
        return XCB_NONE;
    for (const std::uint32_t window : *clients) {
        if (WindowProcess(window) == pid)
            return window;
    }
    return XCB_NONE;
}

} // namespace

X11FrontWindow::~X11FrontWindow() {
    if (filtering_ && QCoreApplication::instance() != nullptr)
        QCoreApplication::instance()->removeNativeEventFilter(this);
}

std::uint32_t X11FrontWindow::activeWindow() const {
    const auto active =
        x11::ReadCardinals(x11::RootWindow(), x11::Atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW);
    return active && !active->empty() ? active->front() : 0;
}

ProcessSerialNumber X11FrontWindow::frontProcess() {
    const std::uint32_t window = activeWindow();
    if (window == XCB_NONE)
        return {};
    return {WindowProcess(window), window};
}

bool X11FrontWindow::setFrontProcess(const ProcessSerialNumber &process) {
    xcb_connection_t *connection = x11::Connection();
    if (connection == nullptr)
        return false;
    xcb_window_t window = process.window;
    if (window == XCB_NONE && process.pid != 0)
        window = FirstWindowOf(process.pid);
    if (window == XCB_NONE)
        return false;

    // Asked as an application (source 1) with the time of the user's last
    // press, so that the window manager's focus-stealing rules still hold.
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = x11::Atom("_NET_ACTIVE_WINDOW");
    message.data.data32[0] = 1;
    message.data.data32[1] = std::uint32_t(userTime_());
    message.data.data32[2] = activeWindow();
    xcb_send_event(connection, 0, x11::RootWindow(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char *>(&message));
    xcb_flush(connection);
    return true;
}

ProcessSerialNumber X11FrontWindow::currentProcess() {
    ProcessSerialNumber self{std::int64_t(::getpid()), 0};
    // This program stands in front through its dialog, when one is showing.
    QWidget *dialog = QApplication::activeModalWidget();
    if (dialog == nullptr) {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (window->isVisible() && window->isWindow() &&
                (window->windowType() == Qt::Dialog || window->windowType() == Qt::Window) &&
                !window->testAttribute(Qt::WA_X11DoNotAcceptFocus)) {
                dialog = window;
                break;
            }
        }
    }
    if (dialog != nullptr && dialog->isVisible())
        self.window = std::uint32_t(dialog->winId());
    return self;
}

bool X11FrontWindow::frontIsFullscreen() {
    const auto state =
        x11::ReadCardinals(activeWindow(), x11::Atom("_NET_WM_STATE"), XCB_ATOM_ATOM);
    if (!state)
        return false;
    const xcb_atom_t fullscreen = x11::Atom("_NET_WM_STATE_FULLSCREEN");
    for (const std::uint32_t atom : *state) {
        if (atom == fullscreen)
            return true;
    }
    return false;
}

void X11FrontWindow::setFrontSwitchedHandler(std::function<void()> handler) {
    handler_ = std::move(handler);
    if (handler_ && !filtering_ && x11::Connection() != nullptr) {
        x11::SelectEvents(x11::RootWindow(), XCB_EVENT_MASK_PROPERTY_CHANGE);
        QCoreApplication::instance()->installNativeEventFilter(this);
        filtering_ = true;
        watchActiveWindow();
    } else if (!handler_ && filtering_) {
        QCoreApplication::instance()->removeNativeEventFilter(this);
        filtering_ = false;
    }
}

void X11FrontWindow::watchActiveWindow() {
    const std::uint32_t active = activeWindow();
    if (active == watched_)
        return;
    // Property events of the window left behind are simply not looked at;
    // asking the server to stop would also stop them for this program's own windows.
    watched_ = active;
    x11::SelectEvents(active, XCB_EVENT_MASK_PROPERTY_CHANGE);
}

void X11FrontWindow::reportSwitch() {
    // After the event that told it, not inside it: the handler shows and
    // hides windows.
    if (reportPending_)
        return;
    reportPending_ = true;
    QTimer::singleShot(0, [this] {
        reportPending_ = false;
        if (handler_)
            handler_();
    });
}

bool X11FrontWindow::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *) {
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    if ((event->response_type & 0x7F) != XCB_PROPERTY_NOTIFY)
        return false;
    const auto *notify = reinterpret_cast<const xcb_property_notify_event_t *>(event);
    if (notify->window == x11::RootWindow() && notify->atom == x11::Atom("_NET_ACTIVE_WINDOW")) {
        watchActiveWindow();
        reportSwitch();
    } else if (notify->window == watched_ && notify->atom == x11::Atom("_NET_WM_STATE")) {
        reportSwitch();
    }
    return false;
}

} // namespace platform
