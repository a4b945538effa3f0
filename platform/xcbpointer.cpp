#include "platform/xcbpointer.h"

#include "core/types.h"
#include "platform/x11connection.h"

#include <QCursor>
#include <QGuiApplication>

#include <cmath>
#include <cstdlib>

namespace platform {

namespace {

std::uint16_t ModifiersFromX(std::uint16_t mask) {
    std::uint16_t modifiers = 0;
    if (mask & XCB_MOD_MASK_CONTROL)
        modifiers |= cmdKey;
    if (mask & XCB_MOD_MASK_SHIFT)
        modifiers |= shiftKey;
    if (mask & XCB_MOD_MASK_LOCK)
        modifiers |= alphaLock;
    if (mask & XCB_MOD_MASK_1)
        modifiers |= optionKey;
    if (mask & XCB_MOD_MASK_4)
        modifiers |= controlKey;
    return modifiers;
}

std::uint16_t ModifiersFromQt(Qt::KeyboardModifiers keys) {
    std::uint16_t modifiers = 0;
    if (keys & Qt::ControlModifier)
        modifiers |= cmdKey;
    if (keys & Qt::ShiftModifier)
        modifiers |= shiftKey;
    if (keys & Qt::AltModifier)
        modifiers |= optionKey;
    if (keys & Qt::MetaModifier)
        modifiers |= controlKey;
    return modifiers;
}

} // namespace

struct XcbPointer::Connection {
    xcb_connection_t *connection = nullptr;
    xcb_window_t root = 0;
};

XcbPointer::XcbPointer() {
    // Only where Qt itself talks to an X server; elsewhere Qt's own view serves.
    if (x11::Connection() == nullptr)
        return;
    int screen = 0;
    xcb_connection_t *connection = xcb_connect(nullptr, &screen);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        return;
    }
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int i = 0; i < screen && screens.rem > 0; ++i)
        xcb_screen_next(&screens);
    connection_ = new Connection{connection, screens.rem > 0 ? screens.data->root : 0};
}

XcbPointer::~XcbPointer() {
    if (connection_ != nullptr)
        xcb_disconnect(connection_->connection);
    delete connection_;
}

PointerState XcbPointer::query() {
    PointerState state;
    xcb_query_pointer_reply_t *reply =
        connection_ != nullptr
            ? xcb_query_pointer_reply(connection_->connection,
                                      xcb_query_pointer(connection_->connection, connection_->root),
                                      nullptr)
            : nullptr;
    if (reply == nullptr) {
        state.position = QCursor::pos();
        state.buttonDown = QGuiApplication::mouseButtons() != Qt::NoButton;
        state.modifiers = ModifiersFromQt(QGuiApplication::queryKeyboardModifiers());
        return state;
    }
    const double ratio = x11::DevicePixelRatio();
    state.position =
        QPoint(int(std::floor(reply->root_x / ratio)), int(std::floor(reply->root_y / ratio)));
    // The wheel's buttons 4 and 5 are never held.
    state.buttonDown =
        (reply->mask & (XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3)) != 0;
    state.modifiers = ModifiersFromX(reply->mask);
    std::free(reply);
    return state;
}

} // namespace platform
