// Small helpers for the GIO implementations. Include GIO before Qt: its headers
// use the word that Qt reserves for signals.
#pragma once

#include <gio/gio.h>

#include "platform/activationtokens.h"

#include <memory>

namespace platform {

struct GObjectDeleter {
    void operator()(gpointer object) const {
        if (object != nullptr)
            g_object_unref(object);
    }
};
template <typename T> using GObjectPtr = std::unique_ptr<T, GObjectDeleter>;

// This program's environment with the user's activation token, for a program
// spawned directly; free it with g_strfreev.
inline gchar **LaunchEnvironment() {
    gchar **environment = g_get_environ();
    if (const QByteArray token = NewActivationToken(); !token.isEmpty())
        environment = g_environ_setenv(environment, "DESKTOP_STARTUP_ID", token.constData(), TRUE);
    return environment;
}

// A launch context that hands the program the user's activation token, so
// that its window may come forward without being forced.
inline GObjectPtr<GAppLaunchContext> NewLaunchContext() {
    GObjectPtr<GAppLaunchContext> context(g_app_launch_context_new());
    if (const QByteArray token = NewActivationToken(); !token.isEmpty())
        g_app_launch_context_setenv(context.get(), "DESKTOP_STARTUP_ID", token.constData());
    return context;
}

} // namespace platform
