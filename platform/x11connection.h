// The application's own X connection, as Qt opened it, and the few property
// reads the X11 implementations share. Null when Qt does not run on X11.
#pragma once

#include <xcb/xcb.h>

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <vector>

namespace platform::x11 {

xcb_connection_t *Connection();
xcb_window_t RootWindow();
// The screen number of the display in use (the ".N" of the display name).
int ScreenNumber();
// The logical pixels of the primary screen per device pixel.
double DevicePixelRatio();

xcb_atom_t Atom(const char *name);
// The 32-bit items of a property; nothing when the window or property is missing.
std::optional<std::vector<std::uint32_t>> ReadCardinals(xcb_window_t window, xcb_atom_t property,
                                                        xcb_atom_t type);
// Adds `mask` to the events this connection receives from `window`, keeping the ones it had.
void SelectEvents(xcb_window_t window, std::uint32_t mask);

// The window owning a selection, or XCB_NONE.
xcb_window_t SelectionOwner(xcb_atom_t selection);
// Asks to be told whenever the selection's owner changes (it is taken, or its
// owner leaves): SelectionOwnerChanged() recognises those events.
void WatchSelectionOwner(xcb_atom_t selection);
// The selection whose owner changed, when `event` tells of that; otherwise XCB_ATOM_NONE.
xcb_atom_t SelectionOwnerChanged(const xcb_generic_event_t *event);

} // namespace platform::x11
