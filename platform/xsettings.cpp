#include "platform/xsettings.h"

#include "platform/x11connection.h"

#include <QCoreApplication>
#include <QTimer>
#include <QtEndian>

#include <cstdlib>
#include <string>

namespace platform {

namespace {

enum XSettingType : std::uint8_t { kInteger = 0, kString = 1, kColour = 2 };

// Reads the property's fields in the byte order its first byte names.
class Reader {
public:
    explicit Reader(const QByteArray &data)
        : data_(data), bigEndian_(!data.isEmpty() && data.at(0) == 1) {}
    bool has(qsizetype bytes) const { return bytes >= 0 && at_ + bytes <= data_.size(); }
    void skip(qsizetype bytes) { at_ += bytes; }
    std::uint8_t byte() { return std::uint8_t(data_[at_++]); }
    std::uint16_t card16() {
        const auto *p = reinterpret_cast<const uchar *>(data_.constData() + at_);
        at_ += 2;
        return bigEndian_ ? qFromBigEndian<std::uint16_t>(p) : qFromLittleEndian<std::uint16_t>(p);
    }
    std::uint32_t card32() {
        const auto *p = reinterpret_cast<const uchar *>(data_.constData() + at_);
        at_ += 4;
        return bigEndian_ ? qFromBigEndian<std::uint32_t>(p) : qFromLittleEndian<std::uint32_t>(p);
    }
    QByteArray bytes(qsizetype length) {
        const QByteArray part = data_.mid(at_, length);
        at_ += length;
        return part;
    }

private:
    const QByteArray &data_;
    bool bigEndian_;
    qsizetype at_ = 0;
};

constexpr qsizetype Padded(qsizetype length) {
    return (length + 3) & ~qsizetype(3);
}

} // namespace

XSettingsValues ParseXSettings(const QByteArray &data) {
    XSettingsValues values;
    Reader reader(data);
    if (!reader.has(12))
        return values;
    reader.skip(8); // byte order, padding, serial
    const std::uint32_t count = reader.card32();
    for (std::uint32_t i = 0; i < count && reader.has(4); ++i) {
        const std::uint8_t type = reader.byte();
        reader.skip(1);
        const qsizetype nameLength = reader.card16();
        if (!reader.has(Padded(nameLength) + 4))
            break;
        const QByteArray name = reader.bytes(nameLength);
        reader.skip(Padded(nameLength) - nameLength + 4); // padding, last-change serial
        if (type == kInteger && reader.has(4)) {
            values.insert(name, int(std::int32_t(reader.card32())));
        } else if (type == kString && reader.has(4)) {
            const qsizetype length = reader.card32();
            if (!reader.has(Padded(length)))
                break;
            values.insert(name, QString::fromUtf8(reader.bytes(length)));
            reader.skip(Padded(length) - length);
        } else if (type == kColour && reader.has(8)) {
            reader.skip(8);
        } else {
            break;
        }
    }
    return values;
}

XSettingsWatch::XSettingsWatch(std::function<void()> changed) : changed_(std::move(changed)) {
    if (x11::Connection() == nullptr)
        return;
    const std::string name = "_XSETTINGS_S" + std::to_string(x11::ScreenNumber());
    selection_ = x11::Atom(name.c_str());
    x11::WatchSelectionOwner(selection_);
    QCoreApplication::instance()->installNativeEventFilter(this);
    filtering_ = true;
    read();
}

XSettingsWatch::~XSettingsWatch() {
    if (filtering_ && QCoreApplication::instance() != nullptr)
        QCoreApplication::instance()->removeNativeEventFilter(this);
}

void XSettingsWatch::read() {
    owner_ = x11::SelectionOwner(selection_);
    values_.clear();
    xcb_connection_t *connection = x11::Connection();
    if (owner_ == XCB_NONE || connection == nullptr)
        return;
    // The manager rewrites the property whenever a setting changes.
    x11::SelectEvents(owner_, XCB_EVENT_MASK_PROPERTY_CHANGE);
    const xcb_atom_t property = x11::Atom("_XSETTINGS_SETTINGS");
    xcb_get_property_reply_t *reply = xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, owner_, property, property, 0, 65536), nullptr);
    if (reply == nullptr)
        return;
    values_ = ParseXSettings(QByteArray(static_cast<const char *>(xcb_get_property_value(reply)),
                                        xcb_get_property_value_length(reply)));
    std::free(reply);
}

bool XSettingsWatch::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *) {
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    bool changed = false;
    if (const xcb_atom_t selection = x11::SelectionOwnerChanged(event);
        selection != XCB_ATOM_NONE) {
        changed = selection == selection_;
    } else if ((event->response_type & 0x7F) == XCB_PROPERTY_NOTIFY) {
        const auto *notify = reinterpret_cast<const xcb_property_notify_event_t *>(event);
        changed = notify->window == owner_ && notify->atom == x11::Atom("_XSETTINGS_SETTINGS");
    }
    if (changed && !readPending_) {
        // After the event, from the event loop: reading asks the display again.
        readPending_ = true;
        QTimer::singleShot(0, &context_, [this] {
            readPending_ = false;
            read();
            if (changed_)
                changed_();
        });
    }
    return false;
}

} // namespace platform
