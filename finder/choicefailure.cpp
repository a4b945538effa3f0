#include "finder/choicefailure.h"

#include "core/errors.h"
#include "core/folders.h"
#include "finder/alias.h"
#include "finder/itemcommands.h"
#include "platform/launcher.h"
#include "platform/service.h"

#include <QApplication>
#include <QFile>
#include <QTimer>

#include <climits>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString Tr(const char *text) {
    return QCoreApplication::translate("Finder", text);
}

// Where a broken link points; nothing for anything else.
std::optional<QByteArray> BrokenLinkTarget(const QByteArray &path) {
    struct stat info;
    if (::lstat(path.constData(), &info) != 0 || !S_ISLNK(info.st_mode) ||
        ::stat(path.constData(), &info) == 0)
        return std::nullopt;
    QByteArray target(PATH_MAX, '\0');
    const ssize_t length = ::readlink(path.constData(), target.data(), target.size());
    if (length < 0)
        return std::nullopt;
    target.resize(length);
    return target;
}

} // namespace

void ReportFailedChoice(FinderAction action, const FSSpec &file, OSErr err) {
    if (err == noErr || err == userCanceledErr || err == procNotFound)
        return;
    const QString name = ItemName(file.path);
    FSSpec target = file;
    ResolveAliasFile(&target, true, nullptr, nullptr);
    const QString openWith = Tr("&Open With…");
    const QString showInFolder = Tr("&Show in Folder");
    QString headline;
    QStringList actions;
    if (const auto pointsTo = BrokenLinkTarget(file.path)) {
        headline = Tr("“%1” points to “%2”, which does not exist.")
                       .arg(name, QFile::decodeName(*pointsTo));
        actions = {showInFolder};
    } else if (err == kLSApplicationNotFoundErr) {
        const platform::FileType type =
            platform::service<platform::Launcher>().fileType(target.path);
        headline = Tr("No application is set to open “%1” (%2).")
                       .arg(name, type.description.isEmpty() ? type.contentType : type.description);
        actions = {openWith, showInFolder};
    } else {
        const QString what = action == kFinderReveal ? Tr("“%1” could not be shown in its folder.")
                             : action == kFinderGetInfo
                                 ? Tr("The properties of “%1” could not be shown.")
                                 : Tr("“%1” could not be opened.");
        headline = what.arg(name) + u' ' + MakeErrorAlertTexts(err).message;
    }
    ErrorOffer offer(headline, actions);
    TestError(err);
    if (offer.chosen < 0)
        return;
    if (actions[offer.chosen] == openWith)
        OpenWithChosenApplication(target.path);
    else if (const OSErr shown = DoFinderFile(kFinderReveal, &file, nullptr); shown != procNotFound)
        TestError(shown);
}

void ReportWhenIdle(OSErr err, const QString &headline) {
    constexpr int kRetryMs = 100;
    QTimer::singleShot(kRetryMs, [err, headline] {
        const bool busy = qobject_cast<QApplication *>(QCoreApplication::instance()) != nullptr &&
                          (QApplication::activePopupWidget() != nullptr ||
                           QApplication::activeModalWidget() != nullptr);
        if (busy)
            return ReportWhenIdle(err, headline);
        ErrorOffer offer(headline);
        TestError(err);
    });
}

QString ItemName(const QByteArray &path) {
    return QFile::decodeName(LastPathComponent(path));
}
