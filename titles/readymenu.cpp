#include "titles/readymenu.h"

#include "core/errors.h"
#include "core/lists.h"
#include "foldermenus/foldercache.h"
#include "platform/frontwindow.h"
#include "platform/pointer.h"
#include "platform/service.h"
#include "platform/titlewindows.h"
#include "resources/menus.h"
#include "titles/drawreadymenu.h"
#include "titles/titleevents.h"
#include "titles/titlewindow.h"

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QLoggingCategory>
#include <QScreen>
#include <QTimer>
#include <QWindow>

Q_DECLARE_LOGGING_CATEGORY(lcTitles)

ReadyMenu *firstReadyMenu = nullptr;
ReadyMenu *pulledReadyMenu = nullptr;
bool system105OrLater = false;
Rect menuBarRect;
QImage menuBarBackground;

namespace {
// The title timer: a tick every 1/15 second, while there is input to look at.
QTimer *AppleMenuCarbonTimerRef = nullptr;
bool FrontSwitchedCarbonEventRef = false;
// Whether the display tells of input; otherwise the timer ticks for ever.
bool titleInputWatched = false;
constexpr int kTitleTimerInterval = 1000 / 15;

// A tick, unless the display has been quiet since the last one: then the
// timer stops until input wakes it.
void TitleTimerFired() {
    if (!titleInputWatched || platform::service<platform::Pointer>().takeInput()) {
        AppleMenuCarbonTimer();
    } else {
        AppleMenuCarbonTimerRef->stop();
        qCDebug(lcTitles, "hover timer asleep until the next input");
    }
}

// The primary screen's changes of place, size and pixel density move the titles.
void WatchPrimaryScreen() {
    static QList<QMetaObject::Connection> watched;
    for (const QMetaObject::Connection &connection : std::as_const(watched))
        QObject::disconnect(connection);
    watched.clear();
    QScreen *screen = QGuiApplication::primaryScreen();
    if (screen == nullptr)
        return;
    auto moved = [] { ScreenInformationChanged(); };
    watched.append(
        QObject::connect(screen, &QScreen::geometryChanged, AppleMenuCarbonTimerRef, moved));
    watched.append(QObject::connect(screen, &QScreen::logicalDotsPerInchChanged,
                                    AppleMenuCarbonTimerRef, moved));
    watched.append(QObject::connect(screen, &QScreen::physicalDotsPerInchChanged,
                                    AppleMenuCarbonTimerRef, moved));
}

} // namespace

void WakeReadyMenus() {
    if (AppleMenuCarbonTimerRef == nullptr)
        return;
    AppleMenuCarbonTimer();
    AppleMenuCarbonTimerRef->start();
}

bool ReadyMenusAwake() {
    return AppleMenuCarbonTimerRef != nullptr && AppleMenuCarbonTimerRef->isActive();
}

void RefreshReadyMenusLook() {
    platform::TitleWindows &windows = platform::service<platform::TitleWindows>();
    const bool translucent = windows.compositingManagerRunning();
    // Without translucency the titles take the colours of the panel they stand on.
    QImage background = translucent
                            ? QImage()
                            : windows.panelBackground(QRect(menuBarRect.left, menuBarRect.top,
                                                            menuBarRect.right - menuBarRect.left,
                                                            menuBarRect.bottom - menuBarRect.top));
    if (translucent == system105OrLater && background == menuBarBackground)
        return;
    system105OrLater = translucent;
    menuBarBackground = std::move(background);
    InvalidateReadyMenus();
}

OSStatus InitialiseReadyMenus() {
    // The application and folder command menus every folder menu leads to.
    LoadCommandMenus();

    // The images built into the program come after any folder put before them.
    QStringList imageFolders = QDir::searchPaths(QLatin1String(kTitleImageSearchPath));
    if (!imageFolders.contains(QLatin1String(":/images"))) {
        imageFolders.append(QStringLiteral(":/images"));
        QDir::setSearchPaths(QLatin1String(kTitleImageSearchPath), imageFolders);
    }

    platform::service<platform::FrontWindow>().setFrontSwitchedHandler(
        [] { FrontSwitchedCarbonEvent(); });
    FrontSwitchedCarbonEventRef = true;

    AppleMenuCarbonTimerRef = new QTimer();
    AppleMenuCarbonTimerRef->setInterval(kTitleTimerInterval);
    AppleMenuCarbonTimerRef->setTimerType(Qt::CoarseTimer);
    QObject::connect(AppleMenuCarbonTimerRef, &QTimer::timeout, TitleTimerFired);
    // Where the display tells of input, the timer sleeps while nothing moves.
    titleInputWatched = platform::service<platform::Pointer>().watchInput(WakeReadyMenus);
    if (!titleInputWatched)
        AppleMenuCarbonTimerRef->start();

    QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, AppleMenuCarbonTimerRef, [] {
        WatchPrimaryScreen();
        ScreenInformationChanged();
    });
    WatchPrimaryScreen();
    platform::service<platform::TitleWindows>().setChangedHandler(RefreshReadyMenusLook);
    // Places the titles and gives the first tick at once, not after an interval.
    ScreenInformationChanged();
    return noErr;
}

void DestroyReadyMenus() {
    if (AppleMenuCarbonTimerRef != nullptr) {
        platform::service<platform::Pointer>().watchInput(nullptr);
        platform::service<platform::TitleWindows>().setChangedHandler(nullptr);
    }
    delete AppleMenuCarbonTimerRef;
    AppleMenuCarbonTimerRef = nullptr;
    titleInputWatched = false;
    if (FrontSwitchedCarbonEventRef)
        platform::service<platform::FrontWindow>().setFrontSwitchedHandler(nullptr);
    FrontSwitchedCarbonEventRef = false;
}

OSErr RebuildReadyMenus() {
    ClearReadyMenus();
    OSErr status = noErr;
    for (MenuSpec *spec = firstMenuSpec; spec != nullptr && status == noErr; spec = spec->next) {
        // Only left-hand menus get a title; the others are kept in the settings.
        if (spec->side == kSideLeft)
            AddReadyMenu(&status, spec);
    }
    return status;
}

void ClearReadyMenus() {
    while (firstReadyMenu != nullptr)
        RemoveReadyMenu(firstReadyMenu);
}

ReadyMenu *AddReadyMenu(OSErr *err, MenuSpec *spec) {
    ReadyMenu *title = AllocRecord<ReadyMenu>(err);
    if (*err != noErr)
        return title;
    title->menuSpec = spec;
    title->hoverHidden = false;

    auto *window = new TitleWindow();
    title->window = window;
    // Gives the window its place on the display before it is kept above the rest.
    window->winId();
    platform::service<platform::TitleWindows>().keepAbove(window);

    title->cachedMenu = nullptr;
    AddToLinkedList(&firstReadyMenu, title, static_cast<ReadyMenu *>(nullptr));

    // Shown whatever the hover and fullscreen states: their next change corrects it.
    RepositionReadyMenus();
    window->show();
    DrawReadyMenu(title);
    // The hover rule applies to the new title at once, not at the next input.
    WakeReadyMenus();
    return title;
}

void RemoveReadyMenu(ReadyMenu *title) {
    QWidget *window = title->window;
    platform::service<platform::TitleWindows>().forget(window);
    window->hide();
    // Later, not now: the title may be removed from inside its own window's event.
    window->deleteLater();
    title->window = nullptr;

    if (title->menuSpec->contents == kContentsFolder)
        DestroyFolderCachedMenu(title);
    RemoveFromLinkedList(&firstReadyMenu, title);
    DestroyRecord(title);
    RepositionReadyMenus();
}

void RepositionReadyMenus() {
    const QScreen *screen = QGuiApplication::primaryScreen();
    const QRect device = screen != nullptr ? screen->geometry() : QRect();
    menuBarRect.top = std::int16_t(device.top());
    menuBarRect.left = std::int16_t(device.left());
    menuBarRect.right = std::int16_t(device.left() + device.width());
    menuBarRect.bottom = std::int16_t(menuBarRect.top + kMenuBarHeight);

    std::int16_t leftCursor = menuBarRect.left;
    std::int16_t rightCursor = menuBarRect.right;
    for (ReadyMenu *title = firstReadyMenu; title != nullptr; title = title->next) {
        Rect bounds;
        bounds.top = menuBarRect.top;
        bounds.bottom = std::int16_t(bounds.top + kMenuBarHeight);
        bounds.left = leftCursor;
        bounds.right = rightCursor;
        if (title->menuSpec->side == kSideLeft) {
            leftCursor = std::int16_t(leftCursor + kLeftTitleWidth);
            bounds.right = leftCursor;
        } else if (title->menuSpec->side == kSideRight) {
            rightCursor = std::int16_t(rightCursor - kRightTitleWidth);
            bounds.left = rightCursor;
        }
        const QRect place(bounds.left, bounds.top, bounds.right - bounds.left,
                          bounds.bottom - bounds.top);
        title->window->setGeometry(place);
        // After a change of pixel density the widget keeps its place in logical
        // pixels while the window on the display keeps its old size: set that too.
        if (QWindow *native = title->window->windowHandle())
            native->setGeometry(place);

        title->titleRect = Rect{0, 0, std::int16_t(bounds.bottom - bounds.top),
                                std::int16_t(bounds.right - bounds.left)};
        if (title->menuSpec->side == kSideLeft)
            title->titleRect.left = std::int16_t(title->titleRect.left + kLeftTitleInset);
    }
}

void ScreenInformationChanged() {
    RepositionReadyMenus();
    qCDebug(lcTitles, "top bar at %d,%d, %d wide", menuBarRect.left, menuBarRect.top,
            menuBarRect.right - menuBarRect.left);
    RefreshReadyMenusLook();
    // The pointer may now be over a title, or no longer.
    WakeReadyMenus();
}

ReadyMenu *FindReadyMenu(const QWidget *window) {
    for (ReadyMenu *title = firstReadyMenu; title != nullptr; title = title->next) {
        if (title->window == window)
            return title;
    }
    return nullptr;
}
