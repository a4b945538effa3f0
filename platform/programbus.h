// The program's own name on the session bus, example.kestrelmenu.KestrelMenu,
// and its one small interface (resources/dbus/example.kestrelmenu.KestrelMenu1.xml):
// a desktop's keyboard shortcut, or the program started a second time, asks
// the running copy for a menu through it.
#pragma once

#include "core/types.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>

#include <cstdint>
#include <functional>

namespace platform {

inline constexpr const char *kProgramService = "example.kestrelmenu.KestrelMenu";
inline constexpr const char *kProgramPath = "/example/kestrelmenu/KestrelMenu";
inline constexpr const char *kProgramInterface = "example.kestrelmenu.KestrelMenu1";

class ProgramBus final : public QObject, protected QDBusContext {
    Q_OBJECT
public:
    // `popUpMenu(title)` opens that title's menu without waiting for it to
    // close, or says there is no such title. The name is asked for without
    // waiting; a name another program holds is logged and left to it.
    explicit ProgramBus(std::function<bool(std::uint32_t)> popUpMenu,
                        QDBusConnection connection = QDBusConnection::sessionBus());
    ~ProgramBus() override;
    ProgramBus(const ProgramBus &) = delete;
    ProgramBus &operator=(const ProgramBus &) = delete;

public Q_SLOTS:
    void PopUpMenu(uint title);

private:
    std::function<bool(std::uint32_t)> popUpMenu_;
    QDBusConnection connection_;
};

// What a second copy does: asks the copy that runs to pop the first title's
// menu up. It waits up to `timeoutMs` for that copy to take its name (it may
// be starting still) and to answer; connectionInvalid when it did not.
OSErr AskRunningCopyToPopUpMenu(int timeoutMs);

} // namespace platform
