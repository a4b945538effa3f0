#include "platform/x11titlewindows.h"

#include "platform/x11connection.h"

#include <QCoreApplication>
#include <QHash>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

namespace platform {

namespace {

xcb_atom_t CompositorSelection() {
    const std::string name = "_NET_WM_CM_S" + std::to_string(x11::ScreenNumber());
    return x11::Atom(name.c_str());
}

// The dock the window manager lists that covers the device-pixel rectangle's
// top-left corner, as a rectangle of the root window; empty for none.
QRect DockAt(const QRect &bar) {
    xcb_connection_t *connection = x11::Connection();
    const auto clients =
        x11::ReadCardinals(x11::RootWindow(), x11::Atom("_NET_CLIENT_LIST"), XCB_ATOM_WINDOW);
    if (!clients)
        return {};
    const xcb_atom_t dock = x11::Atom("_NET_WM_WINDOW_TYPE_DOCK");
    for (const std::uint32_t window : *clients) {
        const auto types =
            x11::ReadCardinals(window, x11::Atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM);
        if (!types || std::find(types->begin(), types->end(), dock) == types->end())
            continue;
        xcb_get_geometry_reply_t *geometry =
            xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr);
        xcb_translate_coordinates_reply_t *origin = xcb_translate_coordinates_reply(
            connection, xcb_translate_coordinates(connection, window, x11::RootWindow(), 0, 0),
            nullptr);
        QRect area;
        if (geometry != nullptr && origin != nullptr)
            area = QRect(origin->dst_x, origin->dst_y, geometry->width, geometry->height);
        std::free(geometry);
        std::free(origin);
        if (area.contains(bar.topLeft()))
            return area;
    }
    return {};
}

} // namespace

X11TitleWindows::X11TitleWindows() {
    panelSettled_.setSingleShot(true);
    panelSettled_.setInterval(500);
    QObject::connect(&panelSettled_, &QTimer::timeout, [this] {
        if (changed_)
            changed_();
    });
}

X11TitleWindows::~X11TitleWindows() {
    if (filtering_ && QCoreApplication::instance() != nullptr)
        QCoreApplication::instance()->removeNativeEventFilter(this);
}

bool X11TitleWindows::compositingManagerRunning() {
    return x11::SelectionOwner(CompositorSelection()) != XCB_NONE;
}

void X11TitleWindows::filterEvents() {
    if (filtering_ || x11::Connection() == nullptr)
        return;
    // Map and configure events of every top-level window tell of stacking changes.
    x11::SelectEvents(x11::RootWindow(),
                      XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE);
    QCoreApplication::instance()->installNativeEventFilter(this);
    filtering_ = true;
}

void X11TitleWindows::keepAbove(QWidget *window) {
    windows_.append(window);
    ids_.append(std::uint32_t(window->winId()));
    filterEvents();
}

void X11TitleWindows::forget(QWidget *window) {
    const qsizetype index = windows_.indexOf(window);
    if (index < 0)
        return;
    windows_.removeAt(index);
    ids_.removeAt(index);
}

void X11TitleWindows::setChangedHandler(std::function<void()> changed) {
    changed_ = std::move(changed);
    if (!changed_) {
        panelSettled_.stop();
        return;
    }
    filterEvents();
    x11::WatchSelectionOwner(CompositorSelection());
}

QImage X11TitleWindows::panelBackground(const QRect &bar) {
    xcb_connection_t *connection = x11::Connection();
    if (connection == nullptr || bar.isEmpty())
        return {};
    const double ratio = x11::DevicePixelRatio();
    const QRect device(int(std::lround(bar.x() * ratio)), int(std::lround(bar.y() * ratio)),
                       int(std::lround(bar.width() * ratio)),
                       int(std::lround(bar.height() * ratio)));
    const QRect strip = DockAt(device).intersected(device);
    if (strip.isEmpty())
        return {};
    // What the screen shows there: without a compositor, the root window's contents.
    xcb_get_image_reply_t *image = xcb_get_image_reply(
        connection,
        xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, x11::RootWindow(),
                      std::int16_t(strip.x()), std::int16_t(strip.y()),
                      std::uint16_t(strip.width()), std::uint16_t(strip.height()), ~0u),
        nullptr);
    if (image == nullptr)
        return {};
    QImage rows;
    const int length = xcb_get_image_data_length(image);
    if (image->depth >= 24 && length >= strip.width() * strip.height() * 4) {
        const auto *pixels = reinterpret_cast<const std::uint32_t *>(xcb_get_image_data(image));
        rows = QImage(1, device.height(), QImage::Format_RGB32);
        QRgb colour = 0;
        for (int y = 0; y < device.height(); ++y) {
            // Rows below the panel keep its last colour.
            if (y < strip.height()) {
                QHash<QRgb, int> counts;
                int most = 0;
                for (int x = 0; x < strip.width(); ++x) {
                    const QRgb pixel = pixels[y * strip.width() + x] | 0xFF000000u;
                    if (int count = ++counts[pixel]; count > most) {
                        most = count;
                        colour = pixel;
                    }
                }
            }
            rows.setPixel(0, y, colour);
        }
    }
    std::free(image);
    return rows;
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

void X11TitleWindows::windowsChanged() {
    scheduleRestack();
    // A panel may have come, gone or moved; the opaque look takes its colours.
    if (changed_)
        panelSettled_.start();
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
    // Every event passes here: the selection's name is only looked at for a
    // change of a selection's owner.
    if (const xcb_atom_t selection = x11::SelectionOwnerChanged(event);
        changed_ && selection != XCB_ATOM_NONE && selection == CompositorSelection()) {
        // After the event, not inside it: the handler repaints windows.
        QTimer::singleShot(0, [this] {
            if (changed_)
                changed_();
        });
        return false;
    }
    switch (event->response_type & 0x7F) {
    case XCB_MAP_NOTIFY: {
        const auto *map = reinterpret_cast<const xcb_map_notify_event_t *>(event);
        if (map->event == x11::RootWindow() && !isTitle(map->window))
            windowsChanged();
        break;
    }
    case XCB_UNMAP_NOTIFY: {
        const auto *unmap = reinterpret_cast<const xcb_unmap_notify_event_t *>(event);
        if (unmap->event == x11::RootWindow() && !isTitle(unmap->window) && changed_)
            panelSettled_.start();
        break;
    }
    case XCB_CONFIGURE_NOTIFY: {
        const auto *configure = reinterpret_cast<const xcb_configure_notify_event_t *>(event);
        if (configure->event == x11::RootWindow() && !isTitle(configure->window))
            windowsChanged();
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
