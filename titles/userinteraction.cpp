#include "titles/userinteraction.h"

#include "platform/frontwindow.h"
#include "platform/service.h"
#include "titles/readymenu.h"
#include "titles/titleevents.h"

std::int32_t userInteractionHideLevel = 0;

void BeginUserInteraction(ProcessSerialNumber *previousFront) {
    ++userInteractionHideLevel;
    RevisibleReadyMenus();
    platform::FrontWindow &front = platform::service<platform::FrontWindow>();
    *previousFront = front.frontProcess();
    front.setFrontProcess(front.currentProcess());
}

void EndUserInteraction(const ProcessSerialNumber *previousFront) {
    if (previousFront != nullptr)
        platform::service<platform::FrontWindow>().setFrontProcess(*previousFront);
    --userInteractionHideLevel;
    RevisibleReadyMenus();
    // Settings may have changed the hover rule: it applies at once.
    WakeReadyMenus();
}
