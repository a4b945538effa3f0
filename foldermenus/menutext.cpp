#include "foldermenus/menutext.h"

#include <QFontMetrics>

namespace {

// Longer "extensions" are part of the name ("Notes from the 3.5 meeting").
constexpr qsizetype kLongestExtension = 8;

} // namespace

QString MenuItemTextFor(const QString &name) {
    QString text;
    text.reserve(name.size());
    for (const QChar c : name) {
        if (c == u'&')
            text += QLatin1String("&&");
        else if (c.unicode() < 0x20 || c.unicode() == 0x7F)
            text += QChar(QChar::ReplacementCharacter); // a tab would start a shortcut
        else
            text += c;
    }
    return text;
}

QString ElideKeepingExtension(const QString &text, const QFontMetrics &metrics, int width) {
    if (metrics.horizontalAdvance(text) <= width)
        return text;
    const qsizetype dot = text.lastIndexOf(u'.');
    if (dot > 0 && text.size() - dot <= kLongestExtension && !text.mid(dot).contains(u' ')) {
        const QString extension = text.mid(dot);
        const int extensionWidth = metrics.horizontalAdvance(extension);
        if (extensionWidth < width / 2)
            return metrics.elidedText(text.left(dot), Qt::ElideMiddle, width - extensionWidth) +
                   extension;
    }
    return metrics.elidedText(text, Qt::ElideMiddle, width);
}
