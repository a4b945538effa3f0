// Error reporting: every status the program does not handle itself ends here.
//
// TestError shows the error alert (through the platform's alert service) or,
// while a caller has asked for errors to be hidden, stores the status in every
// hiding record and beeps. Context texts, newest first, head the alert.
#pragma once

#include "core/types.h"

#include <QString>
#include <QStringList>

struct ErrorHiding {
    ErrorHiding *next;
    OSErr *errorStore;
};

struct ErrorContext {
    ErrorContext *next;
    Str255 text;
};

// What the reports made while it lives say of their item and offer to do: a
// first line in the caller's words, naming the item, and actions besides OK.
// The newest one counts.
class ErrorOffer {
public:
    explicit ErrorOffer(QString headline, QStringList actions = {});
    ~ErrorOffer();
    ErrorOffer(const ErrorOffer &) = delete;
    ErrorOffer &operator=(const ErrorOffer &) = delete;

    ErrorOffer *next;
    QString headline;    // in place of the status's message, when not empty
    QStringList actions; // offered before OK, in reading order
    int chosen = -1;     // the action the user took; -1 for OK, or while hidden
};

extern ErrorHiding *firstHiding;
extern ErrorContext *firstContext;
extern ErrorOffer *firstOffer;

void TestError(OSErr err);
// The resource and memory forms: the manager's own status wins; without one, a
// null result stands for resNotFound / memFullErr.
OSErr TestResError(const void *result, OSErr resError = noErr);
OSErr TestMemError(const void *result, OSErr memError = noErr);

bool HideErrors(OSErr *errorStore);
void ShowErrors();
bool AddErrorContext(ConstStr255Param text);
void RemoveErrorContext();

// The four texts of the error alert, in the order they are shown.
struct ErrorAlertTexts {
    QString context;
    QString number;
    QString message;
    QString explanation;
};

// What TestError would show for `err` right now; used by TestError itself.
ErrorAlertTexts MakeErrorAlertTexts(OSErr err);

// The one place where errno values become statuses.
OSErr OSErrFromErrno(int error);
