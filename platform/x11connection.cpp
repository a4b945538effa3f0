#include "platform/x11connection.h"

#include <xcb/xfixes.h>

#include <QGuiApplication>
#include <QHash>
#include <QScreen>

#include <cstdlib>
#include <cstring>

namespace platform::x11 {

xcb_connection_t *Connection() {
    auto *x11 = qGuiApp != nullptr ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>()
                                   : nullptr;
    return x11 != nullptr ? x11->connection() : nullptr;
}

int ScreenNumber() {
    // The display name's screen part: ":0.1" is screen 1; without one, screen 0.
    const char *display = std::getenv("DISPLAY");
    if (display == nullptr)
        return 0;
    const char *colon = std::strrchr(display, ':');
    const char *dot = colon != nullptr ? std::strchr(colon, '.') : nullptr;
    return dot != nullptr ? std::atoi(dot + 1) : 0;
}

xcb_window_t RootWindow() {
    xcb_connection_t *connection = Connection();
    if (connection == nullptr)
        return XCB_NONE;
    xcb_screen_iterator_t it = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int n = ScreenNumber(); n > 0 && it.rem > 1; --n)
        xcb_screen_next(&it);
    return it.data != nullptr ? it.data->root : XCB_NONE;
}

double DevicePixelRatio() {
    const QScreen *screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? screen->devicePixelRatio() : 1.0;
}

xcb_atom_t Atom(const char *name) {
    static QHash<QByteArray, xcb_atom_t> known;
    const QByteArray key(name);
    if (auto found = known.constFind(key); found != known.constEnd())
        return *found;
    xcb_connection_t *connection = Connection();
    if (connection == nullptr)
        return XCB_ATOM_NONE;
    xcb_intern_atom_reply_t *reply = xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, std::uint16_t(key.size()), key.constData()),
        nullptr);
    const xcb_atom_t atom = reply != nullptr ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    std::free(reply);
    if (atom != XCB_ATOM_NONE)
        known.insert(key, atom);
    return atom;
}

std::optional<std::vector<std::uint32_t>> ReadCardinals(xcb_window_t window, xcb_atom_t property,
                                                        xcb_atom_t type) {
    xcb_connection_t *connection = Connection();
    if (connection == nullptr || window == XCB_NONE || property == XCB_ATOM_NONE)
        return std::nullopt;
    xcb_get_property_reply_t *reply = xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, window, property, type, 0, 4096), nullptr);
    if (reply == nullptr)
        return std::nullopt;
    std::optional<std::vector<std::uint32_t>> items;
    if (reply->type == type && reply->format == 32) {
        const auto *data = static_cast<const std::uint32_t *>(xcb_get_property_value(reply));
        items.emplace(data, data + xcb_get_property_value_length(reply) / 4);
    }
    std::free(reply);
    return items;
}

void SelectEvents(xcb_window_t window, std::uint32_t mask) {
    xcb_connection_t *connection = Connection();
    if (connection == nullptr || window == XCB_NONE)
        return;
    xcb_get_window_attributes_reply_t *attributes = xcb_get_window_attributes_reply(
        connection, xcb_get_window_attributes(connection, window), nullptr);
    if (attributes == nullptr)
        return; // the window is gone
    const std::uint32_t wanted = attributes->your_event_mask | mask;
    std::free(attributes);
    xcb_change_window_attributes(connection, window, XCB_CW_EVENT_MASK, &wanted);
    xcb_flush(connection);
}

xcb_window_t SelectionOwner(xcb_atom_t selection) {
    xcb_connection_t *connection = Connection();
    if (connection == nullptr || selection == XCB_ATOM_NONE)
        return XCB_NONE;
    xcb_get_selection_owner_reply_t *reply = xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, selection), nullptr);
    const xcb_window_t owner = reply != nullptr ? reply->owner : xcb_window_t(XCB_NONE);
    std::free(reply);
    return owner;
}

namespace {
// The first event number of the fixes extension on Qt's connection; 0 when it is missing.
std::uint8_t FixesFirstEvent() {
    xcb_connection_t *connection = Connection();
    if (connection == nullptr)
        return 0;
    const xcb_query_extension_reply_t *fixes = xcb_get_extension_data(connection, &xcb_xfixes_id);
    return fixes != nullptr && fixes->present ? fixes->first_event : 0;
}
} // namespace

void WatchSelectionOwner(xcb_atom_t selection) {
    xcb_connection_t *connection = Connection();
    if (connection == nullptr || selection == XCB_ATOM_NONE || FixesFirstEvent() == 0)
        return;
    // The version must be asked once per connection before the extension is used;
    // asking again is harmless.
    std::free(xcb_xfixes_query_version_reply(
        connection, xcb_xfixes_query_version(connection, XCB_XFIXES_MAJOR_VERSION, 0), nullptr));
    xcb_xfixes_select_selection_input(connection, RootWindow(), selection,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    xcb_flush(connection);
}

xcb_atom_t SelectionOwnerChanged(const xcb_generic_event_t *event) {
    const std::uint8_t first = FixesFirstEvent();
    if (first == 0 || (event->response_type & 0x7F) != first + XCB_XFIXES_SELECTION_NOTIFY)
        return XCB_ATOM_NONE;
    return reinterpret_cast<const xcb_xfixes_selection_notify_event_t *>(event)->selection;
}

} // namespace platform::x11
