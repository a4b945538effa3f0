#include "platform/gioobjects.h"

#include "platform/giotrustmarks.h"

#include "platform/gioerror.h"

#include <QLoggingCategory>

#include <cstring>

Q_LOGGING_CATEGORY(lcTrustMarks, "kestrel.trust", QtWarningMsg)

namespace platform {

namespace {

constexpr const char *kTrustedAttribute = "metadata::trusted";

struct PendingMark {
    std::function<void(OSErr)> done;
};

void MarkFinished(GObject *file, GAsyncResult *result, gpointer data) {
    std::unique_ptr<PendingMark> pending(static_cast<PendingMark *>(data));
    GError *error = nullptr;
    OSErr err = noErr;
    if (!g_file_set_attributes_finish(G_FILE(file), result, nullptr, &error)) {
        qCWarning(lcTrustMarks, "the trust mark could not be set: %s", error->message);
        err = TakeGioError(error);
    } else {
        qCDebug(lcTrustMarks, "marked as trusted: %s", g_file_peek_path(G_FILE(file)));
    }
    pending->done(err);
}

} // namespace

GioTrustMarks::GioTrustMarks() {
    // GIO sets up the desktop's file layer on its first use, and talks to the
    // session bus while it does: that must happen now, at start, and never on
    // the road of a click.
    GObjectPtr<GFile> home(g_file_new_for_path(g_get_home_dir()));
    GFileAttributeInfoList *namespaces =
        g_file_query_writable_namespaces(home.get(), nullptr, nullptr);
    bool hasStore = false;
    for (int i = 0; namespaces != nullptr && i < namespaces->n_infos; ++i)
        hasStore = hasStore || std::strcmp(namespaces->infos[i].name, "metadata") == 0;
    if (namespaces != nullptr)
        g_file_attribute_info_list_unref(namespaces);
    if (!hasStore)
        qCWarning(lcTrustMarks, "the desktop's metadata store (GVfs) is not available: "
                                "launchers outside the application folders count as untrusted");
}

bool GioTrustMarks::isMarkedTrusted(const QByteArray &path) {
    GObjectPtr<GFile> file(g_file_new_for_path(path.constData()));
    GObjectPtr<GFileInfo> info(
        g_file_query_info(file.get(), kTrustedAttribute, G_FILE_QUERY_INFO_NONE, nullptr, nullptr));
    if (!info || !g_file_info_has_attribute(info.get(), kTrustedAttribute))
        return false;
    gchar *value = g_file_info_get_attribute_as_string(info.get(), kTrustedAttribute);
    const bool trusted = value != nullptr && std::strcmp(value, "true") == 0;
    g_free(value);
    return trusted;
}

void GioTrustMarks::markTrusted(const QByteArray &path, std::function<void(OSErr)> done) {
    GObjectPtr<GFile> file(g_file_new_for_path(path.constData()));
    GObjectPtr<GFileInfo> info(g_file_info_new());
    g_file_info_set_attribute_string(info.get(), kTrustedAttribute, "true");
    // The store is another program: its answer is not waited for.
    g_file_set_attributes_async(file.get(), info.get(), G_FILE_QUERY_INFO_NONE, G_PRIORITY_DEFAULT,
                                nullptr, MarkFinished, new PendingMark{std::move(done)});
}

} // namespace platform
