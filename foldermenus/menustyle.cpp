#include "foldermenus/menustyle.h"

#include "foldermenus/menuicons.h"

#include <QApplication>
#include <QProxyStyle>
#include <QTimer>

namespace {

constexpr int kWarmUpDelayMs = 500;

class ScrollingMenuStyle : public QProxyStyle {
public:
    using QProxyStyle::QProxyStyle;
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *returnData) const override {
        if (hint == SH_Menu_Scrollable)
            return 1;
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
};

} // namespace

void InstallMenuStyle() {
    if (dynamic_cast<ScrollingMenuStyle *>(QApplication::style()) != nullptr)
        return;
    // The desktop's own style underneath, made afresh: the application deletes
    // its current style when it takes the new one.
    QApplication::setStyle(new ScrollingMenuStyle(QApplication::style()->name()));
    // Once the program has started (and its icon theme is chosen), not during.
    QTimer::singleShot(kWarmUpDelayMs, qApp, WarmUpFolderIcons);
}
