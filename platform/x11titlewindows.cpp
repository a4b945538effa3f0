#include "platform/x11titlewindows.h"

#include "platform/x11connection.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdlib>
#include <string>
#include <vector>

namespace platform {

X11TitleWindows::~X11TitleWindows() {
    if (filtering_ && QCoreApplication::instance() != nullptr)
        QCoreApplication::instance()->removeNativeEventFilter(this);
}

bool X11TitleWindows::compositingManagerRunning() {
    xcb_connection_t *connection = x11::Connection();
    if (connection == nullptr)
        return false;
    const std::string selection = "_NET_WM_CM_S" + std::to_string(x11::ScreenNumber());
    const xcb_atom_t atom = x11::Atom(selection.c_str());
    if (atom == XCB_ATOM_NONE)
        return false;
    xcb_get_selection_owner_reply_t *reply = xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, atom), nullptr);
    const bool owned = reply != nullptr && reply->owner != XCB_NONE;
    std::free(reply);
    return owned;
}

void X11TitleWindows::keepAbove(QWidget *window) {
    windows_.append(window);
    ids_.append(std::uint32_t(window->winId()));
    if (!filtering_ && x11::Connection() != nullptr) {
        // Map and configure events of every top-level window tell of stacking changes.
        x11::SelectEvents(x11::RootWindow(),
                          XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE);
        QCoreApplication::instance()->installNativeEventFilter(this);
        filtering_ = true;
    }
}

void X11TitleWindows::forget(QWidget *window) {
    const qsizetype index = windows_.indexOf(window);
    if (index < 0)
        return;
    windows_.removeAt(index);
    ids_.removeAt(index);
}

bool X11TitleWindows::isTitle(std::uint32_t window) const {
    return ids_.contains(window);
}

void X11TitleWindows::scheduleRestack() {
    if (restackPending_ || ids_.isEmpty())
        return;
    restackPending_ = true;
    QTimer::singleShot(0, [this] {
        restackPending_ = false;
        restack();
    });
}

void X11TitleWindows::restack() {
    xcb_connection_t *connection = x11::Connection();
    if (connection == nullptr || ids_.isEmpty())
        return;
    xcb_query_tree_reply_t *tree =
        xcb_query_tree_reply(connection, xcb_query_tree(connection, x11::RootWindow()), nullptr);
    if (tree == nullptr)
        return;
    // Children come bottom to top.
    const xcb_window_t *children = xcb_query_tree_children(tree);
    const int count = xcb_query_tree_children_length(tree);
    std::vector<xcb_get_window_attributes_cookie_t> cookies;
    cookies.reserve(std::size_t(count));
    for (int i = 0; i < count; ++i)
        cookies.push_back(xcb_get_window_attributes(connection, children[i]));

    int topManaged = -1;
    int lowestTitle = count;
    for (int i = 0; i < count; ++i) {
        xcb_get_window_attributes_reply_t *attributes =
            xcb_get_window_attributes_reply(connection, cookies[std::size_t(i)], nullptr);
        if (isTitle(children[i])) {
            if (lowestTitle == count)
                lowestTitle = i;
        } else if (attributes != nullptr && !attributes->override_redirect &&
                   attributes->map_state == XCB_MAP_STATE_VIEWABLE) {
            topManaged = i;
        }
        std::free(attributes);
    }
    if (topManaged > lowestTitle) {
        // Right above that window: pop-up menus and tooltips higher up stay on top.
        xcb_window_t sibling = children[topManaged];
        for (const std::uint32_t id : std::as_const(ids_)) {
            const std::uint32_t values[] = {sibling, XCB_STACK_MODE_ABOVE};
            xcb_configure_window(connection, id,
                                 XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE, values);
            sibling = id;
        }
        xcb_flush(connection);
    }
    std::free(tree);
}

bool X11TitleWindows::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *) {
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    switch (event->response_type & 0x7F) {
    case XCB_MAP_NOTIFY: {
        const auto *map = reinterpret_cast<const xcb_map_notify_event_t *>(event);
        if (map->event == x11::RootWindow() && !isTitle(map->window))
            scheduleRestack();
        break;
    }
    case XCB_CONFIGURE_NOTIFY: {
        const auto *configure = reinterpret_cast<const xcb_configure_notify_event_t *>(event);
        if (configure->event == x11::RootWindow() && !isTitle(configure->window))
            scheduleRestack();
        break;
    }
    case XCB_PROPERTY_NOTIFY: {
        const auto *property = reinterpret_cast<const xcb_property_notify_event_t *>(event);
        if (property->window == x11::RootWindow() &&
            property->atom == x11::Atom("_NET_CLIENT_LIST_STACKING"))
            scheduleRestack();
        break;
    }
    default:
        break;
    }
    return false;
}

} // namespace platform
