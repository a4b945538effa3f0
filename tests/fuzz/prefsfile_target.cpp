// Loads arbitrary bytes as the preferences file. Used by the fuzzer and by the
// test that replays its corpus.
#include "core/settings.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakeloginitems.h"
#include "platform/service.h"
#include "prefs/prefsfile.h"

#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace {

platform::FakeAlerts alerts;

std::string PrepareHome() {
    static std::string file;
    if (!file.empty())
        return file;
    static platform::FakeLoginItems loginItems;
    platform::install<platform::Alerts>(&alerts);
    platform::install<platform::LoginItems>(&loginItems);
    char dir[] = "/tmp/kestrel-prefs-fuzz-XXXXXX";
    if (::mkdtemp(dir) == nullptr)
        std::abort();
    ::setenv("XDG_CONFIG_HOME", dir, 1);
    ::setenv("HOME", dir, 1);
    file = std::string(dir) + "/Kestrel Menu Preferences";
    return file;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const std::string file = PrepareHome();
    const int fd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (fd < 0)
        std::abort();
    if (size > 0 && ::write(fd, data, size) != ssize_t(size))
        std::abort();
    ::close(fd);

    LoadPreferences();

    while (firstMenuSpec != nullptr)
        RemoveMenuFromPreferences(firstMenuSpec);
    appleMenuSettings = kDefaultAppleMenuSettings;
    generalSettings = kDefaultGeneralSettings;
    // The double keeps every alert; only this input's matter.
    alerts.alerts.clear();
    alerts.beeps = 0;
    return 0;
}
