#include "platform/xcbpointer.h"

#include "core/types.h"
#include "platform/x11connection.h"

#include <xcb/xinput.h>

#include <QCursor>
#include <QGuiApplication>
#include <QSocketNotifier>
#include <QTimer>

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
    std::uint8_t inputOpcode = 0; // the input extension's, once raw events are selected
    std::unique_ptr<QSocketNotifier> notifier;

    ~Connection() {
        notifier.reset();
        xcb_disconnect(connection);
    }

    // Asks for raw motion, key and button events of every device: they come
    // whatever window the pointer is in or has the focus, grabs included.
    bool selectRawInput() {
        const xcb_query_extension_reply_t *extension =
            xcb_get_extension_data(connection, &xcb_input_id);
        if (extension == nullptr || !extension->present)
            return false;
        xcb_input_xi_query_version_reply_t *version = xcb_input_xi_query_version_reply(
            connection, xcb_input_xi_query_version(connection, 2, 2), nullptr);
        const bool usable = version != nullptr && version->major_version >= 2;
        std::free(version);
        if (!usable)
            return false;
        struct {
            xcb_input_event_mask_t head;
            std::uint32_t bits;
        } mask{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
               XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE |
                   XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS |
                   XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE | XCB_INPUT_XI_EVENT_MASK_RAW_MOTION};
        xcb_input_xi_select_events(connection, root, 1, &mask.head);
        xcb_flush(connection);
        inputOpcode = extension->major_opcode;
        return true;
    }

    // Reads every event that has come (from the socket too, unless
    // `queuedOnly`) and tells whether any was input.
    bool drain(bool queuedOnly) {
        bool input = false;
        while (xcb_generic_event_t *event = queuedOnly ? xcb_poll_for_queued_event(connection)
                                                       : xcb_poll_for_event(connection)) {
            if ((event->response_type & 0x7F) == XCB_GE_GENERIC &&
                reinterpret_cast<xcb_ge_generic_event_t *>(event)->extension == inputOpcode)
                input = true;
            std::free(event);
        }
        return input;
    }
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
    connection_ = std::make_unique<Connection>();
    connection_->connection = connection;
    connection_->root = screens.rem > 0 ? screens.data->root : 0;
}

XcbPointer::~XcbPointer() = default;

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

    // Waiting for the reply may have read input events off the socket, where
    // the watch no longer sees them: a watch waiting for input hears of them now.
    QSocketNotifier *notifier = connection_->notifier.get();
    if (notifier != nullptr && notifier->isEnabled() && connection_->drain(true)) {
        notifier->setEnabled(false);
        QTimer::singleShot(0, notifier, [this] {
            if (arrived_)
                arrived_();
        });
    }
    return state;
}

bool XcbPointer::watchInput(std::function<void()> arrived) {
    arrived_ = std::move(arrived);
    if (connection_ == nullptr)
        return false;
    if (!arrived_) {
        connection_->notifier.reset();
        return false;
    }
    if (connection_->notifier == nullptr) {
        if (connection_->inputOpcode == 0 && !connection_->selectRawInput())
            return false;
        connection_->notifier = std::make_unique<QSocketNotifier>(
            xcb_get_file_descriptor(connection_->connection), QSocketNotifier::Read);
        QObject::connect(connection_->notifier.get(), &QSocketNotifier::activated, [this] {
            const bool input = connection_->drain(false);
            // A display that has gone stays readable for ever: stop listening.
            if (xcb_connection_has_error(connection_->connection) != 0)
                connection_->notifier->setEnabled(false);
            if (!input)
                return;
            // Further input waits in the socket until takeInput() reads it.
            connection_->notifier->setEnabled(false);
            if (arrived_)
                arrived_();
        });
    }
    connection_->notifier->setEnabled(true);
    return true;
}

bool XcbPointer::takeInput() {
    if (connection_ == nullptr || connection_->notifier == nullptr)
        return true; // nothing watches: as if the pointer never rested
    if (connection_->drain(false))
        return true;
    connection_->notifier->setEnabled(true);
    return false;
}

} // namespace platform
