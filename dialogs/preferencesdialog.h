// The preferences dialog: every click changes the settings at once and, where
// needed, applies the change at once. There is no OK or Cancel; closing keeps
// what was changed.
#pragma once

#include "dialogs/dialogitems.h"

class QEvent;

// The dialog's items, by number.
enum PreferencesItem : DialogItemIndex {
    kOpenAtLoginItem = 1,
    kFinderToFrontItem = 2,
    kStartupLabelItem = 3,
    kFirstColourSampleItem = 4, // 4..8: rainbow, grey, blue, red, green
    kFirstColourRadioItem = 9,  // 9..13, in the same order
    kColourLabelItem = 14,
    kHideOverAreaItem = 15,
    kFirstAreaItem = 16, // 16..21: top, bottom, left, right, centre, outside
    kHideWithKeyItem = 22,
    kShowWithKeyItem = 23,
    kFirstModifierItem = 24, // 24..26: Ctrl, Super, Shift
    kHidingLabelItem = 27,
    kMainMenuIconsItem = 28,
    kSubMenuIconsItem = 29,
    kIconLimitItem = 30,
    kIconsLabelItem = 31,
    kFirstSeparatorItem = 32, // 32..34
    kClosePreferencesItem = 35,
};

void ShowPreferencesDialog();
// Turns the closing keys (Return, Enter, Escape, Ctrl+W) and the window's close
// button into item 35. True when the event was turned into an item.
bool ShowPreferencesFilter(DialogRef dialog, QEvent *event, DialogItemIndex *itemHit);
void DrawSeparatorUserItem(DialogRef dialog, DialogItemIndex item);

// The parts of ShowPreferencesDialog, for tests and for the dialog itself.
DialogRef NewPreferencesDialog();
void RefreshPreferencesDialog(DialogRef dialog);
// Acts on an item as a click on it does; false when the dialog is to close.
bool HitPreferencesItem(DialogRef dialog, DialogItemIndex item);
