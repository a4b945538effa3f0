// Drawing a title: the menu-bar look where needed and its icons.
#pragma once

#include "core/types.h"

#include <QString>

struct ReadyMenu;
class QPainter;

// The folder the title images are looked up in, as a QDir search-path prefix:
// "kestreltitles:blue.png". Qt resources (":/images") are on it.
inline constexpr const char *kTitleImageSearchPath = "kestreltitles";

// Draws the whole title window now.
void DrawReadyMenu(ReadyMenu *title);
// Draws the named title image centred in `area` at its natural size with
// opacity `alpha`; nothing when `name` is empty or the image cannot be read.
void DrawCenteredPNGPicture(QPainter *context, const QString &name, const Rect *area, float alpha);
// The image file name for the title's kind and the chosen colour; empty for none.
QString ReadyMenuIconName(const ReadyMenu *title);
