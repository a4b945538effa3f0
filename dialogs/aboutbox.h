// The About box, and handing web addresses to the desktop.
#pragma once

#include "core/types.h"

#include <QByteArray>

// Shows the About box; its second button opens the product's web page, its
// third the user guide.
void ShowAboutDialog();
// Opens the address given by `length` bytes at `url` in its default handler.
OSStatus OpenURL(const char *url, long length);
OSStatus OpenURLString(ConstStr255Param url);

// The product's web page.
QByteArray ProductPageURL();
// The user guide installed beside the program, as a file address.
QByteArray UserGuideURL();

// The About box's buttons, by item number.
inline constexpr int kAboutOkItem = 1;
inline constexpr int kAboutWebPageItem = 2;
inline constexpr int kAboutGuideItem = 3;
