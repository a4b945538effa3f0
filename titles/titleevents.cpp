#include "titles/titleevents.h"

#include "core/settings.h"
#include "finder/applications.h"
#include "foldermenus/clickfoldermenu.h"
#include "platform/frontwindow.h"
#include "platform/pointer.h"
#include "platform/service.h"
#include "titles/drawreadymenu.h"
#include "titles/readymenu.h"
#include "titles/userinteraction.h"

#include <QLoggingCategory>
#include <QTimer>
#include <QWidget>

#include <cmath>

Q_LOGGING_CATEGORY(lcTitles, "kestrel.titles", QtWarningMsg)

bool classicFrontHideFlag = false;
FolderMenuClick clickFolderMenu = [](QPoint where, ReadyMenu *title, bool suppressOpen,
                                     bool forKeyboard) {
    // Its status has been reported where it arose.
    ClickFolderMenu(where, title, suppressOpen, forKeyboard);
};

namespace {

void BringThisProgramToFront() {
    platform::FrontWindow &front = platform::service<platform::FrontWindow>();
    front.setFrontProcess(front.currentProcess());
}

// Whether the point lies in the rectangle: top and left edges inside, bottom
// and right edges outside.
bool PointInRect(QPoint point, int top, int left, int bottom, int right) {
    return point.x() >= left && point.x() < right && point.y() >= top && point.y() < bottom;
}

// Whether the hover-area rule hides a title, the pointer given in the title
// window's own coordinates.
bool InHideArea(QPoint local, const Rect &area, OSType hideArea) {
    const int mh = (area.left + area.right) / 2;
    const int mv = (area.top + area.bottom) / 2;
    const int insetH = (area.right - area.left) / 4;
    const int insetV = (area.bottom - area.top) / 4;
    const bool inCentre = PointInRect(local, area.top + insetV, area.left + insetH,
                                      area.bottom - insetV, area.right - insetH);
    switch (hideArea) {
    case kAreaLeft:
        return local.x() < mh;
    case kAreaRight:
        return local.x() >= mh;
    case kAreaTop:
        return local.y() < mv;
    case kAreaBottom:
        return local.y() >= mv;
    case kAreaCentre:
        return inCentre;
    case kAreaOutside:
        return !inCentre;
    default:
        return false;
    }
}

bool HoverHides(const ReadyMenu *title, const platform::PointerState &pointer) {
    // Also when the window is hidden: its place still counts.
    const QRect bounds = title->window->geometry();
    if (title->menuSpec->side != kSideLeft)
        return false;
    const bool inside = PointInRect(pointer.position, bounds.top(), bounds.left(),
                                    bounds.top() + bounds.height(), bounds.left() + bounds.width());
    bool base = false;
    switch (appleMenuSettings.hideMode) {
    case 1:
    case 3:
        base = inside && (pointer.modifiers & appleMenuSettings.hideModifiers) != 0;
        break;
    case 2:
        base = inside && InHideArea(pointer.position - bounds.topLeft(), title->titleRect,
                                    appleMenuSettings.hideArea);
        break;
    default:
        return false;
    }
    // Mode 3 turns the rule round: hidden except while the key is held over the title.
    return appleMenuSettings.hideMode == 3 ? !base : base;
}

} // namespace

OSStatus MenuWindowCarbonEvent(const TitleEvent &event) {
    ReadyMenu *title = event.window != nullptr ? FindReadyMenu(event.window) : nullptr;
    switch (event.kind) {
    case TitleEventKind::MouseDown: {
        if (title != nullptr && event.mouseLocation) {
            // The location is global already; converting it once more adds the
            // window's origin again, which automation engines rely on.
            const auto h = std::int16_t(std::trunc(event.mouseLocation->x()));
            const auto v = std::int16_t(std::trunc(event.mouseLocation->y()));
            const QPoint converted = title->window->mapToGlobal(QPoint(h, v));
            ProcessSerialNumber engine;
            if (converted == QPoint(1, 18) &&
                FindApplicationProcess(kAutomationEngineCreator, &engine) == noErr)
                return noErr;
        }
        if (userInteractionHideLevel > 0) {
            BringThisProgramToFront();
            return noErr;
        }
        if (title != nullptr)
            SelectReadyMenu(title, false);
        return noErr;
    }
    case TitleEventKind::DrawContent:
    case TitleEventKind::Shown:
        if (title != nullptr)
            DrawReadyMenu(title);
        return noErr;
    case TitleEventKind::Constrain:
        return noErr;
    }
    return noErr;
}

void SelectReadyMenu(ReadyMenu *title, bool suppressOpen, std::optional<QPoint> at) {
    if (pulledReadyMenu != nullptr)
        return;
    pulledReadyMenu = title;
    qCDebug(lcTitles, "title at %d,%d selected", title->window->x(), title->window->y());
    // Drawn at once, so that the highlight shows before the menu opens.
    DrawReadyMenu(title);

    // The title's own local values serve as the global point: for every
    // left-hand title the menu opens at (10, 26), under the first title.
    const QPoint popUpPoint =
        at.value_or(QPoint(title->titleRect.left, title->titleRect.bottom + 4));
    if (title->menuSpec->contents == kContentsFolder && clickFolderMenu != nullptr)
        clickFolderMenu(popUpPoint, title, suppressOpen, at.has_value());

    pulledReadyMenu = nullptr;
    DrawReadyMenu(title);
    // The hover rule looks at the pointer again now that the menu is closed.
    WakeReadyMenus();
}

bool PopUpReadyMenu(std::uint32_t number) {
    ReadyMenu *title = firstReadyMenu;
    for (std::uint32_t n = 1; title != nullptr && n < number; ++n)
        title = title->next;
    if (number == 0 || title == nullptr)
        return false;
    // Not from inside the caller: the menu runs a loop of its own.
    QTimer::singleShot(0, title->window, [title] {
        ReadyMenu *still = firstReadyMenu;
        while (still != nullptr && still != title)
            still = still->next;
        if (still == nullptr || pulledReadyMenu != nullptr)
            return;
        if (userInteractionHideLevel > 0)
            return BringThisProgramToFront();
        qCDebug(lcTitles, "menu asked for from outside");
        SelectReadyMenu(title, false, platform::service<platform::Pointer>().query().position);
    });
    return true;
}

OSStatus FrontSwitchedCarbonEvent() {
    classicFrontHideFlag = platform::service<platform::FrontWindow>().frontIsFullscreen();
    qCDebug(lcTitles, "front window switched; fullscreen: %d", int(classicFrontHideFlag));
    RevisibleReadyMenus();
    return noErr;
}

void RevisibleReadyMenu(ReadyMenu *title) {
    title->window->setVisible(!classicFrontHideFlag && !title->hoverHidden);
    DrawReadyMenu(title);
}

void RevisibleReadyMenus() {
    for (ReadyMenu *title = firstReadyMenu; title != nullptr; title = title->next)
        RevisibleReadyMenu(title);
}

void InvalidateReadyMenus() {
    for (ReadyMenu *title = firstReadyMenu; title != nullptr; title = title->next)
        title->window->update();
}

void AppleMenuCarbonTimer() {
    // Nothing changes while a menu is open or a button is held.
    if (pulledReadyMenu != nullptr)
        return;
    const platform::PointerState pointer = platform::service<platform::Pointer>().query();
    if (pointer.buttonDown)
        return;
    for (ReadyMenu *title = firstReadyMenu; title != nullptr; title = title->next) {
        const bool hidden = HoverHides(title, pointer);
        if (hidden != title->hoverHidden) {
            title->hoverHidden = hidden;
            RevisibleReadyMenu(title);
        }
    }
}
