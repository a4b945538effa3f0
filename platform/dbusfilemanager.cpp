#include "platform/gioobjects.h"

#include "platform/dbusfilemanager.h"

#include "core/errors.h"
#include "core/folders.h"
#include "platform/busdaemon.h"
#include "platform/gioerror.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QLoggingCategory>

#include <optional>

Q_LOGGING_CATEGORY(lcFileManager, "kestrel.filemanager", QtWarningMsg)

namespace platform {

namespace {

constexpr const char *kFolderType = "inode/directory";

QString ServiceName() {
    return QString::fromLatin1(kFileManagerService);
}

GObjectPtr<GAppInfo> DefaultFolderApplication() {
    return GObjectPtr<GAppInfo>(g_app_info_get_default_for_type(kFolderType, FALSE));
}

// How a request that was sent failed: never delivered, not answered, or refused.
OSErr StatusOfFailure(const QDBusError &error) {
    switch (error.type()) {
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
        return errAETimeout;
    case QDBusError::NoReply:
    case QDBusError::ServiceUnknown:
    case QDBusError::UnknownObject:
    case QDBusError::UnknownInterface:
    case QDBusError::UnknownMethod:
    case QDBusError::Disconnected:
    case QDBusError::NoServer:
        return connectionInvalid;
    default:
        // The bus could not start the service either.
        return error.name().startsWith(QLatin1String("org.freedesktop.DBus.Error.Spawn"))
                   ? OSErr(connectionInvalid)
                   : OSErr(errAEEventFailed);
    }
}

// What to call a program in a message: the name of its application, when it
// has one, else its own name.
QString ProgramTitle(const std::optional<RunningProcess> &process) {
    if (!process || process->programNames.isEmpty())
        return {};
    const QByteArray &program = process->programNames.first();
    QString title = QString::fromLocal8Bit(program);
    GList *all = g_app_info_get_all();
    for (GList *node = all; node != nullptr; node = node->next) {
        auto *application = G_APP_INFO(node->data);
        if (LastPathComponent(g_app_info_get_executable(application)) == program) {
            title = QString::fromUtf8(g_app_info_get_display_name(application));
            break;
        }
    }
    g_list_free_full(all, g_object_unref);
    return title;
}

// A question to the bus itself, answered within a short time or not at all.
QVariantList BusCall(QDBusConnection &connection, const QString &method,
                     const QVariantList &arguments) {
    constexpr int kStartTimeoutMs = 3000;
    const QDBusMessage reply =
        connection.call(BusDaemonMessage(method, arguments), QDBus::Block, kStartTimeoutMs);
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments() : QVariantList();
}

// Copies a folder and everything in it; links are copied as links.
bool CopyRecursively(GFile *source, GFile *destination, GError **error) {
    const GFileType type =
        g_file_query_file_type(source, G_FILE_QUERY_INFO_NOFOLLOW_SYMLINKS, nullptr);
    if (type != G_FILE_TYPE_DIRECTORY)
        return g_file_copy(source, destination,
                           GFileCopyFlags(G_FILE_COPY_NOFOLLOW_SYMLINKS | G_FILE_COPY_ALL_METADATA),
                           nullptr, nullptr, nullptr, error);
    if (!g_file_make_directory(destination, nullptr, error))
        return false;
    GObjectPtr<GFileEnumerator> children(
        g_file_enumerate_children(source, G_FILE_ATTRIBUTE_STANDARD_NAME,
                                  G_FILE_QUERY_INFO_NOFOLLOW_SYMLINKS, nullptr, error));
    if (!children)
        return false;
    for (;;) {
        GFileInfo *info = nullptr;
        GFile *child = nullptr;
        if (!g_file_enumerator_iterate(children.get(), &info, &child, nullptr, error))
            return false;
        if (child == nullptr)
            return true;
        GObjectPtr<GFile> target(g_file_get_child(destination, g_file_info_get_name(info)));
        if (!CopyRecursively(child, target.get(), error))
            return false;
    }
}

// Deletes a folder and everything in it; links are deleted, not followed.
bool DeleteRecursively(GFile *item, GError **error) {
    const GFileType type =
        g_file_query_file_type(item, G_FILE_QUERY_INFO_NOFOLLOW_SYMLINKS, nullptr);
    if (type == G_FILE_TYPE_DIRECTORY) {
        GObjectPtr<GFileEnumerator> children(
            g_file_enumerate_children(item, G_FILE_ATTRIBUTE_STANDARD_NAME,
                                      G_FILE_QUERY_INFO_NOFOLLOW_SYMLINKS, nullptr, error));
        if (!children)
            return false;
        for (;;) {
            GFile *child = nullptr;
            if (!g_file_enumerator_iterate(children.get(), nullptr, &child, nullptr, error))
                return false;
            if (child == nullptr)
                break;
            if (!DeleteRecursively(child, error))
                return false;
        }
    }
    return g_file_delete(item, nullptr, error);
}

} // namespace

DBusFileManager::DBusFileManager(QDBusConnection connection)
    : connection_(std::move(connection)),
      watcher_(ServiceName(), connection_, QDBusServiceWatcher::WatchForOwnerChange) {
    QObject::connect(
        &watcher_, &QDBusServiceWatcher::serviceOwnerChanged, &context_,
        [this](const QString &, const QString &, const QString &owner) { ownerChanged(owner); });
    // Where things stand is asked once, at start, and waited for: the first
    // choice may come at once. From then on the watch keeps it.
    activatable_ = BusCall(connection_, QStringLiteral("ListActivatableNames"), {})
                       .value(0)
                       .toStringList()
                       .contains(ServiceName());
    const QString owner =
        BusCall(connection_, QStringLiteral("GetNameOwner"), {ServiceName()}).value(0).toString();
    if (!owner.isEmpty()) {
        owner_ = owner;
        pid_ = BusCall(connection_, QStringLiteral("GetConnectionUnixProcessID"), {owner})
                   .value(0)
                   .toUInt();
    }
}

void DBusFileManager::askBus(const QString &method, const QVariantList &arguments,
                             std::function<void(const QDBusMessage &)> answered) {
    auto *watcher = new QDBusPendingCallWatcher(
        connection_.asyncCall(BusDaemonMessage(method, arguments)), &context_);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &context_,
                     [answered = std::move(answered)](QDBusPendingCallWatcher *finished) {
                         answered(finished->reply());
                         finished->deleteLater();
                     });
}

void DBusFileManager::ownerChanged(const QString &owner) {
    owner_ = owner;
    pid_ = 0;
    name_.clear();
    if (owner.isEmpty())
        return;
    askBus(QStringLiteral("GetConnectionUnixProcessID"), {owner},
           [this, owner](const QDBusMessage &reply) {
               if (owner != owner_ || reply.type() != QDBusMessage::ReplyMessage)
                   return;
               pid_ = reply.arguments().value(0).toUInt();
               qCDebug(lcFileManager, "the file manager is process %lld", qlonglong(pid_));
           });
}

bool DBusFileManager::serviceExists() {
    return !owner_.isEmpty() || activatable_;
}

std::int64_t DBusFileManager::serviceProcess() {
    return pid_;
}

QString DBusFileManager::serviceName() {
    // Only messages of failure name it: every installed application is read to
    // find its name, which start-up and clicks need not wait for.
    if (name_.isEmpty() && pid_ != 0)
        name_ = ProgramTitle(processes_.process(pid_));
    return name_;
}

void DBusFileManager::setFailureHandler(std::function<void(const FailedRequest &)> handler) {
    failureHandler_ = std::move(handler);
}

OSErr DBusFileManager::send(const QString &method, const QList<QByteArray> &paths) {
    if (!connection_.isConnected() || !serviceExists()) {
        qCWarning(lcFileManager, "%s: the file manager service cannot be reached",
                  qPrintable(method));
        return connectionInvalid;
    }
    QStringList uris;
    for (const QByteArray &path : paths)
        uris.append(QString::fromLatin1(FileUriFromPath(path)));
    QDBusMessage message =
        QDBusMessage::createMethodCall(ServiceName(), QString::fromLatin1(kFileManagerPath),
                                       QString::fromLatin1(kFileManagerInterface), method);
    // The token lets the file manager bring its window forward; nothing here
    // forces it to the front.
    message << uris << QString::fromLatin1(NewActivationToken());

    const QDBusPendingCall pending = connection_.asyncCall(message, kFileManagerTimeoutMs);
    if (pending.isFinished() && pending.isError()) {
        qCWarning(lcFileManager, "%s could not be sent: %s", qPrintable(method),
                  qPrintable(pending.error().message()));
        return connectionInvalid;
    }
    auto *watcher = new QDBusPendingCallWatcher(pending, &context_);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &context_,
                     [this, method, paths](QDBusPendingCallWatcher *finished) {
                         finished->deleteLater();
                         if (!finished->isError())
                             return;
                         const QDBusError error = finished->error();
                         qCWarning(lcFileManager, "%s failed: %s: %s", qPrintable(method),
                                   qPrintable(error.name()), qPrintable(error.message()));
                         // A file manager that went away while asked never saw the request.
                         const OSErr status =
                             error.type() == QDBusError::NoReply && !owner_.isEmpty()
                                 ? OSErr(errAETimeout)
                                 : StatusOfFailure(error);
                         if (failureHandler_)
                             failureHandler_(FailedRequest{method.toLatin1(), paths, status});
                     });
    return noErr;
}

OSErr DBusFileManager::showFolders(const QList<QByteArray> &paths) {
    return send(QStringLiteral("ShowFolders"), paths);
}

OSErr DBusFileManager::showItems(const QList<QByteArray> &paths) {
    return send(QStringLiteral("ShowItems"), paths);
}

OSErr DBusFileManager::showItemProperties(const QList<QByteArray> &paths) {
    return send(QStringLiteral("ShowItemProperties"), paths);
}

bool DBusFileManager::alternativeExists() {
    return DefaultFolderApplication() != nullptr;
}

std::int64_t DBusFileManager::alternativeProcess() {
    const GObjectPtr<GAppInfo> application = DefaultFolderApplication();
    if (!application)
        return 0;
    const QByteArray program = LastPathComponent(g_app_info_get_executable(application.get()));
    for (const RunningProcess &process : processes_.running()) {
        if (process.isApplication && process.programNames.contains(program))
            return process.pid;
    }
    return 0;
}

OSErr DBusFileManager::alternativeOpenFolders(const QList<QByteArray> &paths) {
    const GObjectPtr<GAppInfo> application = DefaultFolderApplication();
    if (!application)
        return procNotFound;
    GList *files = nullptr;
    for (const QByteArray &path : paths)
        files = g_list_append(files, g_file_new_for_path(path.constData()));
    GError *error = nullptr;
    const gboolean launched =
        g_app_info_launch(application.get(), files, NewLaunchContext().get(), &error);
    g_list_free_full(files, g_object_unref);
    if (!launched) {
        qCWarning(lcFileManager, "the folder application did not start: %s", error->message);
        return TakeGioError(error);
    }
    return noErr;
}

OSErr DBusFileManager::copyInto(const QByteArray &item, const QByteArray &folder) {
    GObjectPtr<GFile> source(g_file_new_for_path(item.constData()));
    GObjectPtr<GFile> destination(
        g_file_new_for_path(JoinPath(folder, LastPathComponent(item)).constData()));
    GError *error = nullptr;
    if (!CopyRecursively(source.get(), destination.get(), &error))
        return TakeGioError(error);
    return noErr;
}

OSErr DBusFileManager::moveInto(const QByteArray &item, const QByteArray &folder) {
    GObjectPtr<GFile> source(g_file_new_for_path(item.constData()));
    GObjectPtr<GFile> destination(
        g_file_new_for_path(JoinPath(folder, LastPathComponent(item)).constData()));
    GError *error = nullptr;
    if (g_file_move(source.get(), destination.get(), G_FILE_COPY_NOFOLLOW_SYMLINKS, nullptr,
                    nullptr, nullptr, &error))
        return noErr;
    // Across file systems a folder cannot be moved in one step: copy, then delete.
    if (!g_error_matches(error, G_IO_ERROR, G_IO_ERROR_WOULD_RECURSE))
        return TakeGioError(error);
    g_clear_error(&error);
    if (!CopyRecursively(source.get(), destination.get(), &error))
        return TakeGioError(error);
    if (!DeleteRecursively(source.get(), &error))
        return TakeGioError(error);
    return noErr;
}

OSErr DBusFileManager::moveToTrash(const QByteArray &item) {
    GObjectPtr<GFile> file(g_file_new_for_path(item.constData()));
    GError *error = nullptr;
    // GIO keeps the desktop's own trash: the item, and a .trashinfo that says
    // where it came from, so that the file manager can put it back.
    if (!g_file_trash(file.get(), nullptr, &error))
        return TakeGioError(error);
    return noErr;
}

} // namespace platform
