// The text of menu items: names shown as written, and shortened to fit.
#pragma once

#include <QString>

class QFontMetrics;

// Menu texts carry '&' as mnemonic marks and a tab before a shortcut: a name
// is shown as written by doubling the one and replacing the other (and every
// other control character) with U+FFFD.
QString MenuItemTextFor(const QString &name);

// `text` as it fits in `width` pixels: whole when it fits, else shortened in
// the middle with an ellipsis, keeping a file name's extension whole.
QString ElideKeepingExtension(const QString &text, const QFontMetrics &metrics, int width);
