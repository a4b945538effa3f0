#include "titles/userinteraction.h"

#include "platform/frontwindow.h"
#include "platform/service.h"
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
}
