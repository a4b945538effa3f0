#include "prefs/prefsrecovery.h"

#include "core/errors.h"
#include "core/folders.h"
#include "core/lists.h"
#include "core/settings.h"
#include "platform/alerts.h"
#include "platform/notifications.h"
#include "platform/service.h"

#include <QCoreApplication>
#include <QDate>
#include <QFile>
#include <QLoggingCategory>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcPrefs, "kestrel.prefs", QtWarningMsg)

namespace {

// When this copy started: a temporary file younger than that may belong to a
// save still under way.
const timespec processStart = [] {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return now;
}();

bool OlderThanProcess(const timespec &time) {
    return time.tv_sec < processStart.tv_sec ||
           (time.tv_sec == processStart.tv_sec && time.tv_nsec < processStart.tv_nsec);
}

// The names mkstemp gives: the file's name, a dot and six letters or digits.
bool IsTemporaryName(const QByteArray &name, const QByteArray &fileName) {
    if (name.size() != fileName.size() + 7 || !name.startsWith(fileName + '.'))
        return false;
    for (const char c : name.right(6)) {
        if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')))
            return false;
    }
    return true;
}

QString Tr(const char *text) {
    return QCoreApplication::translate("Preferences", text);
}

QString ShownPath(const QByteArray &path) {
    return QFile::decodeName(path);
}

// Renames without ever replacing what may have appeared under the new name.
int RenameNoReplace(const QByteArray &from, const QByteArray &to) {
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // A file system without RENAME_NOREPLACE: check, then rename.
    struct stat info {};
    if (::lstat(to.constData(), &info) == 0)
        return EEXIST;
    return ::rename(from.constData(), to.constData()) == 0 ? 0 : errno;
}

void ForgetSettings() {
    while (firstMenuSpec != nullptr)
        RemoveMenuFromPreferences(firstMenuSpec);
    appleMenuSettings = kDefaultAppleMenuSettings;
    generalSettings = kDefaultGeneralSettings;
}

} // namespace

QByteArray FinalTarget(const QByteArray &path) {
    QByteArray current = path;
    // As many links as the kernel follows; a longer chain is a loop, and the
    // load has refused it already.
    for (int hop = 0; hop < 40; ++hop) {
        char buffer[PATH_MAX];
        const ssize_t length = ::readlink(current.constData(), buffer, sizeof buffer);
        if (length <= 0 || std::size_t(length) >= sizeof buffer)
            break;
        const QByteArray target(buffer, length);
        current = target.startsWith('/') ? target : JoinPath(ParentPath(current), target);
    }
    return current;
}

void RemoveInterruptedSaves(const QByteArray &prefsFile) {
    const QByteArray target = FinalTarget(prefsFile);
    const QByteArray folder = ParentPath(target);
    const QByteArray fileName = LastPathComponent(target);
    DIR *dir = ::opendir(folder.constData());
    if (dir == nullptr)
        return;
    while (const dirent *entry = ::readdir(dir)) {
        const QByteArray name(entry->d_name);
        if (!IsTemporaryName(name, fileName))
            continue;
        const QByteArray path = JoinPath(folder, name);
        struct stat info {};
        if (::lstat(path.constData(), &info) == 0 && S_ISREG(info.st_mode) &&
            info.st_uid == ::geteuid() && OlderThanProcess(info.st_mtim)) {
            qCInfo(lcPrefs, "removing %s, left by an interrupted save", path.constData());
            ::unlink(path.constData());
        }
    }
    ::closedir(dir);
}

QByteArray DamagedFileName(const QByteArray &prefsFile) {
    const QByteArray stem =
        prefsFile + " (damaged " + QDate::currentDate().toString(Qt::ISODate).toLatin1();
    for (int number = 1;; ++number) {
        const QByteArray candidate =
            stem + (number > 1 ? ' ' + QByteArray::number(number) : QByteArray()) + ')';
        struct stat info {};
        if (::lstat(candidate.constData(), &info) != 0 || number == 1000)
            return candidate;
    }
}

OSErr OfferDefaultSettings(const QByteArray &prefsFile, OSErr status, bool damaged) {
    const QByteArray aside = DamagedFileName(prefsFile);
    platform::Alert alert;
    alert.status = status;
    alert.headline = (damaged ? Tr("The settings file “%1” is damaged.")
                              : Tr("The settings file “%1” cannot be read."))
                         .arg(ShownPath(prefsFile));
    alert.explanation =
        Tr("Quit to repair the file or put back a copy of it. Or start with the default "
           "settings: the file is then kept beside them as “%1”, and nothing in it is lost.")
            .arg(ShownPath(LastPathComponent(aside)));
    alert.details = Tr("Error %1: %2").arg(status).arg(MakeErrorAlertTexts(status).message);
    // Letters alone choose in an alert: Q quits, S starts afresh.
    alert.buttons = {Tr("&Quit"), Tr("&Start with Default Settings")};
    alert.defaultButton = 0;
    alert.escapeButton = 0;
    if (platform::service<platform::Alerts>().showAlert(alert) != 1)
        return status;

    if (const int error = RenameNoReplace(prefsFile, aside); error != 0) {
        const OSErr err = OSErrFromErrno(error);
        Str255 context;
        SetPString(context, Tr("While keeping the damaged settings file aside:").toStdString());
        const bool added = AddErrorContext(context);
        TestError(err);
        if (added)
            RemoveErrorContext();
        return err;
    }
    qCWarning(lcPrefs, "the damaged preferences file was kept as %s", aside.constData());
    ForgetSettings();
    return SetDefaultPreferences();
}

void ReportFailedSave(const QByteArray &prefsFile, OSErr status) {
    qCWarning(lcPrefs, "the preferences could not be saved to %s: error %d", prefsFile.constData(),
              int(status));
    const QString body =
        Tr("The changes made since Kestrel Menu started are lost; “%1” keeps the settings saved "
           "before. %2 (Error %3)")
            .arg(ShownPath(prefsFile), MakeErrorAlertTexts(status).message)
            .arg(status);
    platform::service<platform::Notifications>().notify(
        Tr("Kestrel Menu could not save its settings"), body);
}
