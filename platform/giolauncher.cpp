// GIO first: its headers use the word that Qt reserves for signals.
#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

#include "platform/giolauncher.h"

#include "platform/gioerror.h"

#include <QLoggingCategory>

#include <memory>
#include <vector>

Q_LOGGING_CATEGORY(lcLauncher, "kestrel.launcher")

namespace platform {

namespace {

struct GObjectDeleter {
    void operator()(gpointer object) const {
        if (object != nullptr)
            g_object_unref(object);
    }
};
template <typename T> using GObjectPtr = std::unique_ptr<T, GObjectDeleter>;

OSErr StatusOf(GError *error, const char *what) {
    qCWarning(lcLauncher, "%s: %s", what, error->message);
    const OSErr err = OSErrFromGioError(error->domain, error->code);
    g_error_free(error);
    return err;
}

bool RunsInTerminal(GAppInfo *application) {
    return G_IS_DESKTOP_APP_INFO(application) &&
           g_desktop_app_info_get_boolean(G_DESKTOP_APP_INFO(application), "Terminal");
}

// The default application for a content type, leaving out programs that run
// in a terminal: an editor opening in a terminal window is never what a click
// on a document should bring up unannounced.
GObjectPtr<GAppInfo> ApplicationForType(const char *contentType) {
    GObjectPtr<GAppInfo> preferred(g_app_info_get_default_for_type(contentType, FALSE));
    if (preferred && !RunsInTerminal(preferred.get()))
        return preferred;
    GObjectPtr<GAppInfo> chosen;
    GList *all = g_app_info_get_all_for_type(contentType);
    for (GList *node = all; node != nullptr; node = node->next) {
        auto *application = static_cast<GAppInfo *>(node->data);
        if (!RunsInTerminal(application)) {
            chosen.reset(G_APP_INFO(g_object_ref(application)));
            break;
        }
    }
    g_list_free_full(all, g_object_unref);
    if (!chosen && preferred)
        qCInfo(lcLauncher, "%s would open only in the terminal program %s: not opened", contentType,
               g_app_info_get_id(preferred.get()));
    return chosen;
}

void RecordPid(GDesktopAppInfo *, GPid pid, gpointer data) {
    *static_cast<std::int64_t *>(data) = pid;
}

} // namespace

OSErr GioLauncher::openWithDefaultApplication(const QByteArray &path) {
    GObjectPtr<GFile> file(g_file_new_for_path(path.constData()));
    GError *error = nullptr;
    GObjectPtr<GFileInfo> info(g_file_query_info(file.get(), G_FILE_ATTRIBUTE_STANDARD_CONTENT_TYPE,
                                                 G_FILE_QUERY_INFO_NONE, nullptr, &error));
    if (!info)
        return StatusOf(error, "cannot tell the type of the item");
    const char *contentType = g_file_info_get_content_type(info.get());
    if (contentType == nullptr)
        return kLSApplicationNotFoundErr;
    GObjectPtr<GAppInfo> application = ApplicationForType(contentType);
    if (!application) {
        qCInfo(lcLauncher, "no application opens %s", contentType);
        return kLSApplicationNotFoundErr;
    }
    GList *files = g_list_append(nullptr, file.get());
    const gboolean launched = g_app_info_launch(application.get(), files, nullptr, &error);
    g_list_free(files);
    if (!launched)
        return StatusOf(error, "the application did not start");
    return noErr;
}

OSErr GioLauncher::openUrl(const QByteArray &url) {
    GError *error = nullptr;
    if (!g_app_info_launch_default_for_uri(url.constData(), nullptr, &error))
        return StatusOf(error, "the address could not be opened");
    return noErr;
}

OSErr GioLauncher::launchDesktopEntry(const QByteArray &entry, const QList<QByteArray> &paths,
                                      std::int64_t *pid) {
    if (pid != nullptr)
        *pid = 0;
    GObjectPtr<GDesktopAppInfo> application(
        g_desktop_app_info_new_from_filename(entry.constData()));
    if (!application) {
        qCWarning(lcLauncher, "not an application entry: %s", entry.constData());
        return g_file_test(entry.constData(), G_FILE_TEST_EXISTS) ? paramErr : fnfErr;
    }
    GList *uris = nullptr;
    for (const QByteArray &path : paths)
        uris = g_list_append(uris, g_filename_to_uri(path.constData(), nullptr, nullptr));
    std::int64_t started = 0;
    GError *error = nullptr;
    const gboolean launched = g_desktop_app_info_launch_uris_as_manager(
        application.get(), uris, nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr, RecordPid,
        &started, &error);
    g_list_free_full(uris, g_free);
    if (!launched)
        return StatusOf(error, "the application did not start");
    if (pid != nullptr)
        *pid = started;
    return noErr;
}

OSErr GioLauncher::launchProgram(const QByteArray &program, const QList<QByteArray> &arguments,
                                 std::int64_t *pid) {
    if (pid != nullptr)
        *pid = 0;
    std::vector<QByteArray> storage{program};
    storage.insert(storage.end(), arguments.begin(), arguments.end());
    std::vector<char *> argv;
    for (QByteArray &argument : storage)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    GPid started = 0;
    GError *error = nullptr;
    // Without G_SPAWN_DO_NOT_REAP_CHILD the program is reaped for us, and is
    // not left a zombie of this one.
    if (!g_spawn_async(nullptr, argv.data(), nullptr, G_SPAWN_DEFAULT, nullptr, nullptr, &started,
                       &error))
        return StatusOf(error, "the program did not start");
    if (pid != nullptr)
        *pid = started;
    return noErr;
}

} // namespace platform
