// What makes the titles behave like menu titles: opening a menu on a click,
// stepping aside while the pointer rests on them or a fullscreen window is in
// front, and the timer that watches the pointer.
#pragma once

#include "core/types.h"

#include <QPoint>
#include <QPointF>

#include <cstdint>
#include <optional>

struct ReadyMenu;
class QWidget;

// The events a title window passes on to MenuWindowCarbonEvent.
enum class TitleEventKind { MouseDown, DrawContent, Shown, Constrain };

struct TitleEvent {
    TitleEventKind kind;
    QWidget *window = nullptr;            // the window the event is about; null when unknown
    std::optional<QPointF> mouseLocation; // mouse-down only, as the event carried it
};

// True while the window in front fills the screen: every title steps aside.
extern bool classicFrontHideFlag;

// Pops up a folder title's menu at `where` (ready for the keyboard when
// `forKeyboard`), tracks it and acts on the choice; returns when the menu has
// closed: ClickFolderMenu unless something else is put in its place; while it
// is null a click only highlights the title.
using FolderMenuClick = void (*)(QPoint where, ReadyMenu *title, bool suppressOpen,
                                 bool forKeyboard);
extern FolderMenuClick clickFolderMenu;

// The creator of the automation engines whose synthetic click at (1, 18) must
// not open a menu.
inline constexpr OSType kAutomationEngineCreator = FourCC("KM*E");

OSStatus MenuWindowCarbonEvent(const TitleEvent &event);
// Highlights the title, opens its menu and returns once the menu has closed.
// The menu opens under the title, or at `at` (global) with its first item
// highlighted, ready for the keyboard.
void SelectReadyMenu(ReadyMenu *title, bool suppressOpen, std::optional<QPoint> at = {});
// Opens the menu of the title `number` (from 1, in the order they stand) at
// the pointer, ready for the keyboard, as soon as the event loop is free;
// false when there is no such title. While a menu or a dialog of the program
// is up it only brings the program forward, as a click does.
bool PopUpReadyMenu(std::uint32_t number);
OSStatus FrontSwitchedCarbonEvent();
// One tick of the title timer: applies the hover rule to every title.
void AppleMenuCarbonTimer();
void RevisibleReadyMenus();
void RevisibleReadyMenu(ReadyMenu *title);
// Marks every title window for redrawing after a change of settings.
void InvalidateReadyMenus();
