#include "core/errors.h"

#include "core/lists.h"
#include "platform/alerts.h"
#include "platform/service.h"
#include "resources/statusmessages.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <cerrno>
#include <string>

ErrorHiding *firstHiding = nullptr;
ErrorContext *firstContext = nullptr;
ErrorOffer *firstOffer = nullptr;

Q_LOGGING_CATEGORY(lcErrors, "kestrel.errors", QtWarningMsg)

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
    ErrorOffer *offer = firstOffer;
    const QString message =
        offer != nullptr && !offer->headline.isEmpty() ? offer->headline : texts.message;
    platform::Alert alert;
    alert.status = err;
    alert.headline = texts.context.isEmpty() ? message : texts.context + u' ' + message;
    alert.explanation = texts.explanation;
    alert.details = QCoreApplication::translate("Alerts", "Error %1").arg(texts.number);
    if (offer != nullptr && !offer->actions.isEmpty()) {
        alert.buttons = offer->actions;
        alert.buttons.append(QCoreApplication::translate("Alerts", "OK"));
        alert.defaultButton = alert.escapeButton = int(offer->actions.size());
    }
    qCInfo(lcErrors, "alert: %s (error %d)", qPrintable(alert.headline), int(err));
    const int chosen = alerts.showAlert(alert);
    if (offer != nullptr)
        offer->chosen = chosen < offer->actions.size() ? chosen : -1;
}

ErrorOffer::ErrorOffer(QString headline, QStringList actions)
    : next(firstOffer), headline(std::move(headline)), actions(std::move(actions)) {
    firstOffer = this;
}

ErrorOffer::~ErrorOffer() {
    // Offers end in the order they began.
    firstOffer = next;
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
