#include "core/errors.h"

#include "core/lists.h"
#include "platform/alerts.h"
#include "platform/service.h"
#include "resources/statusmessages.h"

#include <QCoreApplication>

#include <cerrno>
#include <string>

ErrorHiding *firstHiding = nullptr;
ErrorContext *firstContext = nullptr;

namespace {

// The context texts, newest first, run together and cut so the result never
// passes 255 bytes; contexts that no longer fit are dropped.
std::string CollectContext() {
    std::string context;
    for (const ErrorContext *record = firstContext; record != nullptr; record = record->next) {
        const std::size_t length = record->text[0];
        if (context.size() + length >= 256) {
            context.append(reinterpret_cast<const char *>(record->text + 1), 255 - context.size());
            break;
        }
        context.append(reinterpret_cast<const char *>(record->text + 1), length);
    }
    return context;
}

} // namespace

ErrorAlertTexts MakeErrorAlertTexts(OSErr err) {
    ErrorAlertTexts texts;
    texts.number = QString::number(err);
    bool found = false;
    for (const auto table : StatusMessageTables()) {
        for (const StatusMessage &entry : table) {
            if (entry.code == err) {
                texts.message = QCoreApplication::translate(kStatusMessagesContext, entry.message);
                texts.explanation =
                    QCoreApplication::translate(kStatusMessagesContext, entry.explanation);
                found = true;
                break;
            }
        }
        if (found)
            break;
    }
    if (texts.message.isEmpty())
        texts.message = FallbackErrorText();
    if (texts.explanation.isEmpty())
        texts.explanation = FallbackErrorText();
    const std::string context = CollectContext();
    texts.context = QString::fromUtf8(context.data(), qsizetype(context.size()));
    return texts;
}

void TestError(OSErr err) {
    if (err == noErr)
        return;
    auto &alerts = platform::service<platform::Alerts>();
    if (firstHiding != nullptr) {
        // Every nesting level learns of the error, not only the innermost.
        for (ErrorHiding *record = firstHiding; record != nullptr; record = record->next)
            *record->errorStore = err;
        alerts.beep();
        return;
    }
    const ErrorAlertTexts texts = MakeErrorAlertTexts(err);
    platform::Alert alert;
    alert.status = err;
    alert.headline = texts.context.isEmpty() ? texts.message : texts.context + u' ' + texts.message;
    alert.explanation = texts.explanation;
    alert.details = QCoreApplication::translate("Alerts", "Error %1").arg(texts.number);
    alerts.showAlert(alert);
}

OSErr TestResError(const void *result, OSErr resError) {
    OSErr err = resError;
    if (err == noErr && result == nullptr)
        err = resNotFound;
    TestError(err);
    return err;
}

OSErr TestMemError(const void *result, OSErr memError) {
    OSErr err = memError;
    if (err == noErr && result == nullptr)
        err = memFullErr;
    TestError(err);
    return err;
}

bool HideErrors(OSErr *errorStore) {
    OSErr err = noErr;
    auto *record = AllocRecord<ErrorHiding>(&err);
    if (err != noErr)
        return false;
    *errorStore = noErr;
    record->errorStore = errorStore;
    AddToLinkedList(&firstHiding, record, firstHiding);
    return true;
}

void ShowErrors() {
    ErrorHiding *record = firstHiding;
    if (record != nullptr)
        RemoveFromLinkedList(&firstHiding, record);
    DestroyRecord(record);
}

bool AddErrorContext(ConstStr255Param text) {
    OSErr err = noErr;
    auto *record = AllocRecord<ErrorContext>(&err);
    if (err != noErr)
        return false;
    std::memcpy(record->text, text, std::size_t(text[0]) + 1);
    AddToLinkedList(&firstContext, record, firstContext);
    return true;
}

void RemoveErrorContext() {
    ErrorContext *record = firstContext;
    if (record != nullptr)
        RemoveFromLinkedList(&firstContext, record);
    DestroyRecord(record);
}

OSErr OSErrFromErrno(int error) {
    switch (error) {
    case 0:
        return noErr;
    case ENOENT:
        return fnfErr;
    case ENOTDIR:
        return dirNFErr;
    case EACCES:
    case EPERM:
        return afpAccessDenied;
    case EEXIST:
        return dupFNErr;
    case ENOSPC:
    case EDQUOT:
        return dskFulErr;
    case EROFS:
        return wPrErr;
    case EIO:
        return ioErr;
    case ENAMETOOLONG:
        return bdNamErr;
    case ENOMEM:
        return memFullErr;
    case EBUSY:
    case ETXTBSY:
        return fBsyErr;
    case EMFILE:
    case ENFILE:
        return tmfoErr;
    case EINVAL:
        return paramErr;
    case EBADF:
        return rfNumErr;
    case ENODEV:
    case ENXIO:
        return nsvErr;
    default:
        return ioErr; // ELOOP and everything without a closer classic status
    }
}
