// A title at the left end of the top bar: one per configured left-hand menu.
#pragma once

#include "core/settings.h"
#include "core/types.h"

class FolderMenu;
class QImage;
class QWidget;
class QFileSystemWatcher;

struct ReadyMenu {
    ReadyMenu *next;
    MenuSpec *menuSpec;     // not owned: the MenuSpec list owns it
    FolderMenu *cachedMenu; // the title's root folder menu; null until first needed
    QWidget *window;        // the title window; owned
    Rect titleRect;         // window-local; a left-hand title's area starts 10 pixels in
    bool hoverHidden;       // hidden by the hover rule at the last timer tick
    QFileSystemWatcher *folderSubscription; // watches the folder of cachedMenu
};

extern ReadyMenu *firstReadyMenu;
extern ReadyMenu *pulledReadyMenu; // the title whose menu is open, or null

// True when a compositing manager runs, so titles are drawn translucent over
// the panel; without one they draw an opaque menu-bar look of their own.
extern bool system105OrLater;
// The top bar of the primary screen as last placed: its top 22 pixels.
extern Rect menuBarRect;
// Without a compositor: what the panel under the top bar shows, a pixel wide
// and a row per device pixel; null where no panel is (the style's bar is drawn).
extern QImage menuBarBackground;

// The fixed measures of the top bar and its titles.
inline constexpr int kMenuBarHeight = 22;
inline constexpr int kLeftTitleWidth = 45;
inline constexpr int kRightTitleWidth = 22;
inline constexpr int kLeftTitleInset = 10;

// Sets up what every title shares: the front-window watch and the title timer.
OSStatus InitialiseReadyMenus();
void DestroyReadyMenus();
// Removes every title and makes one per left-hand menu, stopping at the first failure.
OSErr RebuildReadyMenus();
void ClearReadyMenus();
// Makes, places and shows a title for `spec`. On failure after the record was
// made, the record is returned unlinked, with `*err` set.
ReadyMenu *AddReadyMenu(OSErr *err, MenuSpec *spec);
void RemoveReadyMenu(ReadyMenu *title);
// Places every title in the top bar of the primary screen.
void RepositionReadyMenus();
// Re-places the titles after the primary screen changed.
void ScreenInformationChanged();
// Takes the look from the display again: translucent with a compositor,
// otherwise opaque in the colours of the panel beneath; redraws every title.
void RefreshReadyMenusLook();
// Applies the hover rule now and keeps the timer ticking while input goes on:
// called on input, and whenever titles or their surroundings change.
void WakeReadyMenus();
// Whether the title timer ticks: always where the display cannot tell of
// input, otherwise only until the display has been quiet for one tick.
bool ReadyMenusAwake();

// The first title whose window is `window`, or null.
ReadyMenu *FindReadyMenu(const QWidget *window);
