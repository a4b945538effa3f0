// Login items on the freedesktop autostart folders: the user's own
// ($XDG_CONFIG_HOME/autostart) and the system's ($XDG_CONFIG_DIRS/autostart).
#pragma once

#include "platform/loginitems.h"

namespace platform {

class XdgAutostart final : public LoginItems {
public:
    // `selfExecutable` names the running copy; tests point it elsewhere.
    explicit XdgAutostart(QByteArray selfExecutable = "/proc/self/exe");

    QList<LoginItem> items(LoginItemsScope scope) override;
    bool remove(LoginItemsScope scope, const QString &entryName) override;
    bool add(LoginItemsScope scope, const QByteArray &path, bool hide) override;
    bool isKestrelMenuProgram(const QByteArray &path) override;
    bool isThisProgram(const QByteArray &path) override;
    std::optional<QByteArray> thisProgramPath() override;

    // The folder of a list; empty when it cannot be told.
    static QByteArray folder(LoginItemsScope scope);
    // The text of the entry that starts `program`; nothing when no Exec line
    // can carry the path.
    static std::optional<QByteArray> entryText(const QByteArray &program, bool hide);

private:
    QByteArray selfExecutable_;
};

// The file name of every Kestrel Menu executable.
inline constexpr const char *kExecutableName = "kestrel-menu";
// Our own key for the "hide once opened" flag of a login item.
inline constexpr const char *kHideKey = "X-Kestrel-Hide";

} // namespace platform
