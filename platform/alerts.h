// Alerts and beeps: the modal alert, and the system beep.
#pragma once

#include "core/types.h"

#include <QString>
#include <QStringList>

namespace platform {

// One alert. The first line says in plain words what happened and names the
// item; the status number is for those who want it, in the details.
struct Alert {
    OSErr status = noErr;  // the status this alert reports; noErr for one that reports none
    QString headline;      // the first line
    QString explanation;   // what it means and what can be done
    QString details;       // technical details, shown on request
    QStringList buttons;   // in reading order; none gives a single OK
    int defaultButton = 0; // what Return chooses
    int escapeButton = 0;  // what Escape and closing the window choose
};

class Alerts {
public:
    virtual ~Alerts() = default;
    // Shows the alert and returns, once it is dismissed, the index of the
    // button chosen (0 for the single OK).
    virtual int showAlert(const Alert &alert) = 0;
    virtual void beep() = 0;
};

} // namespace platform
