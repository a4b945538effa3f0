// GIO first: its headers use the word that Qt reserves for signals.
#include <gio/gio.h>

#include "platform/dbusfilemanager.h"

#include "core/errors.h"
#include "core/folders.h"
#include "platform/gioerror.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QLoggingCategory>

#include <memory>

Q_LOGGING_CATEGORY(lcFileManager, "kestrel.filemanager")

namespace platform {

namespace {

constexpr const char *kFolderType = "inode/directory";

template <typename T> struct GObjectDeleter {
    void operator()(T *object) const {
        if (object != nullptr)
            g_object_unref(object);
    }
};
template <typename T> using GObjectPtr = std::unique_ptr<T, GObjectDeleter<T>>;

QString ServiceName() {
    return QString::fromLatin1(kFileManagerService);
}

GObjectPtr<GAppInfo> DefaultFolderApplication() {
    return GObjectPtr<GAppInfo>(g_app_info_get_default_for_type(kFolderType, FALSE));
}

OSErr StatusOf(GError *error) {
    const OSErr err = OSErrFromGioError(error->domain, error->code);
    g_error_free(error);
    return err;
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

QByteArray FileUriFromPath(const QByteArray &path) {
    return "file://" + path.toPercentEncoding("/");
}

DBusFileManager::DBusFileManager(QDBusConnection connection) : connection_(std::move(connection)) {}

bool DBusFileManager::serviceExists() {
    if (!connection_.isConnected())
        return false;
    QDBusConnectionInterface *bus = connection_.interface();
    const QDBusReply<bool> registered = bus->isServiceRegistered(ServiceName());
    if (registered.isValid() && registered.value())
        return true;
    const QDBusReply<QStringList> activatable = bus->activatableServiceNames();
    return activatable.isValid() && activatable.value().contains(ServiceName());
}

std::int64_t DBusFileManager::serviceProcess() {
    if (!connection_.isConnected())
        return 0;
    const QDBusReply<uint> pid = connection_.interface()->servicePid(ServiceName());
    return pid.isValid() ? std::int64_t(pid.value()) : 0;
}

OSErr DBusFileManager::send(const QString &method, const QList<QByteArray> &paths) {
    if (!serviceExists()) {
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
    // No start-up id: the window is brought forward through the window manager.
    message << uris << QString();

    // The answer is not awaited; a failure that comes later is only logged.
    const QDBusPendingCall pending = connection_.asyncCall(message, kFileManagerTimeoutMs);
    if (pending.isFinished() && pending.isError()) {
        qCWarning(lcFileManager, "%s could not be sent: %s", qPrintable(method),
                  qPrintable(pending.error().message()));
        return connectionInvalid;
    }
    auto *watcher = new QDBusPendingCallWatcher(pending);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished,
                     [method](QDBusPendingCallWatcher *finished) {
                         if (finished->isError())
                             qCWarning(lcFileManager, "%s failed: %s", qPrintable(method),
                                       qPrintable(finished->error().message()));
                         finished->deleteLater();
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
    const gboolean launched = g_app_info_launch(application.get(), files, nullptr, &error);
    g_list_free_full(files, g_object_unref);
    if (!launched) {
        qCWarning(lcFileManager, "the folder application did not start: %s", error->message);
        return StatusOf(error);
    }
    return noErr;
}

OSErr DBusFileManager::copyInto(const QByteArray &item, const QByteArray &folder) {
    GObjectPtr<GFile> source(g_file_new_for_path(item.constData()));
    GObjectPtr<GFile> destination(
        g_file_new_for_path(JoinPath(folder, LastPathComponent(item)).constData()));
    GError *error = nullptr;
    if (!CopyRecursively(source.get(), destination.get(), &error))
        return StatusOf(error);
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
        return StatusOf(error);
    g_clear_error(&error);
    if (!CopyRecursively(source.get(), destination.get(), &error))
        return StatusOf(error);
    if (!DeleteRecursively(source.get(), &error))
        return StatusOf(error);
    return noErr;
}

} // namespace platform
