#include "titles/readymenu.h"

ReadyMenu *firstReadyMenu = nullptr;
ReadyMenu *pulledReadyMenu = nullptr;

ReadyMenu *FindReadyMenu(const QWidget *window) {
    for (ReadyMenu *title = firstReadyMenu; title != nullptr; title = title->next) {
        if (title->window == window)
            return title;
    }
    return nullptr;
}
