#include "platform/processes.h"

namespace platform {

namespace {

constexpr const char *kKestrelMenuPrograms[] = {"kestrel-menu"};
// Desktop automation engines that synthesise clicks on the menu bar.
constexpr const char *kAutomationEnginePrograms[] = {"autokey-gtk", "autokey-qt"};

struct CreatorPrograms {
    OSType creator;
    std::span<const char *const> programs;
};

constexpr CreatorPrograms kCreatorTable[] = {
    {FourCC("KesM"), kKestrelMenuPrograms},
    {FourCC("KM*E"), kAutomationEnginePrograms},
};

} // namespace

std::span<const char *const> ProgramsOfCreator(OSType creator) {
    for (const CreatorPrograms &entry : kCreatorTable) {
        if (entry.creator == creator)
            return entry.programs;
    }
    return {};
}

bool IsProgramOfCreator(const RunningProcess &process, OSType creator) {
    for (const char *program : ProgramsOfCreator(creator)) {
        for (const QByteArray &name : process.programNames) {
            if (name == program)
                return true;
        }
    }
    return false;
}

} // namespace platform
