#include "platform/gioobjects.h"

#include <gio/gdesktopappinfo.h>

#include "platform/giolauncher.h"

#include "platform/gioerror.h"

#include <QLoggingCategory>

#include <algorithm>
#include <vector>

Q_LOGGING_CATEGORY(lcLauncher, "kestrel.launcher", QtWarningMsg)

namespace platform {

namespace {

OSErr StatusOf(GError *error, const char *what) {
    qCWarning(lcLauncher, "%s: %s", what, error->message);
    return TakeGioError(error);
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

OSErr Launch(GAppInfo *application, GFile *file) {
    GList *files = g_list_append(nullptr, file);
    GError *error = nullptr;
    const gboolean launched =
        g_app_info_launch(application, files, NewLaunchContext().get(), &error);
    g_list_free(files);
    return launched ? OSErr(noErr) : StatusOf(error, "the application did not start");
}

QString ContentTypeOf(GFile *file, GError **error) {
    GObjectPtr<GFileInfo> info(g_file_query_info(file, G_FILE_ATTRIBUTE_STANDARD_CONTENT_TYPE,
                                                 G_FILE_QUERY_INFO_NONE, nullptr, error));
    const char *type = info ? g_file_info_get_content_type(info.get()) : nullptr;
    return QString::fromUtf8(type);
}

ApplicationInfo InfoOf(GAppInfo *application) {
    ApplicationInfo info{g_app_info_get_id(application),
                         QString::fromUtf8(g_app_info_get_display_name(application)),
                         {}};
    if (GIcon *icon = g_app_info_get_icon(application); icon != nullptr && G_IS_THEMED_ICON(icon)) {
        if (const gchar *const *names = g_themed_icon_get_names(G_THEMED_ICON(icon)); names[0])
            info.iconName = QString::fromUtf8(names[0]);
    }
    return info;
}

} // namespace

GioLauncher::GioLauncher() {
    // The first launch would otherwise connect GIO to the session bus and wait
    // for it; connecting now, without waiting, keeps every launch from that.
    // The connection is GIO's one for the whole program, kept for good.
    static const bool connecting = [] {
        g_bus_get(
            G_BUS_TYPE_SESSION, nullptr,
            [](GObject *, GAsyncResult *result, gpointer) {
                static GDBusConnection *bus = g_bus_get_finish(result, nullptr);
                Q_UNUSED(bus);
            },
            nullptr);
        return true;
    }();
    Q_UNUSED(connecting);
}

OSErr GioLauncher::openWithDefaultApplication(const QByteArray &path) {
    GObjectPtr<GFile> file(g_file_new_for_path(path.constData()));
    GError *error = nullptr;
    const QString contentType = ContentTypeOf(file.get(), &error);
    if (error != nullptr)
        return StatusOf(error, "cannot tell the type of the item");
    if (contentType.isEmpty())
        return kLSApplicationNotFoundErr;
    GObjectPtr<GAppInfo> application = ApplicationForType(contentType.toUtf8().constData());
    if (!application) {
        qCInfo(lcLauncher, "no application opens %s", qPrintable(contentType));
        return kLSApplicationNotFoundErr;
    }
    return Launch(application.get(), file.get());
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
        application.get(), uris, NewLaunchContext().get(), G_SPAWN_SEARCH_PATH, nullptr, nullptr,
        RecordPid, &started, &error);
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
    gchar **environment = LaunchEnvironment();
    GPid started = 0;
    GError *error = nullptr;
    // Without G_SPAWN_DO_NOT_REAP_CHILD the program is reaped for us, and is
    // not left a zombie of this one.
    const gboolean spawned = g_spawn_async(nullptr, argv.data(), environment, G_SPAWN_DEFAULT,
                                           nullptr, nullptr, &started, &error);
    g_strfreev(environment);
    if (!spawned)
        return StatusOf(error, "the program did not start");
    if (pid != nullptr)
        *pid = started;
    return noErr;
}

FileType GioLauncher::fileType(const QByteArray &path) {
    GObjectPtr<GFile> file(g_file_new_for_path(path.constData()));
    FileType type{ContentTypeOf(file.get(), nullptr), {}};
    if (!type.contentType.isEmpty()) {
        gchar *description = g_content_type_get_description(type.contentType.toUtf8().constData());
        type.description = QString::fromUtf8(description);
        g_free(description);
    }
    return type;
}

QList<ApplicationInfo> GioLauncher::applicationsFor(const QString &contentType,
                                                    QList<ApplicationInfo> *others) {
    QList<ApplicationInfo> declared;
    const QByteArray type = contentType.toUtf8();
    GList *forType = g_app_info_get_all_for_type(type.constData());
    for (GList *node = forType; node != nullptr; node = node->next) {
        ApplicationInfo info = InfoOf(G_APP_INFO(node->data));
        const char *const *named = g_app_info_get_supported_types(G_APP_INFO(node->data));
        info.namesType = named != nullptr && g_strv_contains(named, type.constData());
        declared.append(info);
    }
    g_list_free_full(forType, g_object_unref);
    // The list is in order of preference, which the default need not lead.
    if (GObjectPtr<GAppInfo> preferred(g_app_info_get_default_for_type(type.constData(), FALSE));
        preferred) {
        const auto found = std::find_if(declared.begin(), declared.end(), [&](const auto &info) {
            return info.id == g_app_info_get_id(preferred.get());
        });
        if (found != declared.end())
            std::rotate(declared.begin(), found, found + 1);
    }
    if (others != nullptr) {
        others->clear();
        GList *all = g_app_info_get_all();
        for (GList *node = all; node != nullptr; node = node->next) {
            auto *application = G_APP_INFO(node->data);
            const ApplicationInfo info = InfoOf(application);
            const bool isDeclared = std::any_of(declared.begin(), declared.end(),
                                                [&](const auto &d) { return d.id == info.id; });
            if (g_app_info_should_show(application) && !isDeclared)
                others->append(info);
        }
        g_list_free_full(all, g_object_unref);
        std::sort(others->begin(), others->end(), [](const auto &a, const auto &b) {
            return a.name.localeAwareCompare(b.name) < 0;
        });
    }
    return declared;
}

OSErr GioLauncher::openWith(const QByteArray &id, const QByteArray &path, bool makeDefault) {
    GObjectPtr<GDesktopAppInfo> application(g_desktop_app_info_new(id.constData()));
    if (!application)
        return fnfErr;
    GObjectPtr<GFile> file(g_file_new_for_path(path.constData()));
    GError *error = nullptr;
    qCDebug(lcLauncher, "opening %s with %s%s", path.constData(), id.constData(),
            makeDefault ? ", from now on" : "");
    if (makeDefault) {
        const QString contentType = ContentTypeOf(file.get(), nullptr);
        if (!g_app_info_set_as_default_for_type(G_APP_INFO(application.get()),
                                                contentType.toUtf8().constData(), &error))
            return StatusOf(error, "the default application could not be set");
    }
    return Launch(G_APP_INFO(application.get()), file.get());
}

} // namespace platform
