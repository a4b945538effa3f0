// The preferences file: arbitrary bytes loaded as the file, then the settings
// are put back for the next input.
#include "core/settings.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakeloginitems.h"
#include "platform/service.h"
#include "prefs/prefsfile.h"
#include "tests/fuzz/fuzztarget.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>

namespace {

platform::FakeAlerts alerts;

// A home of its own, removed when the process ends.
QString PrepareHome() {
    static QTemporaryDir home(QDir::tempPath() + QStringLiteral("/kestrel-prefs-fuzz-XXXXXX"));
    static bool installed = false;
    if (!installed) {
        static platform::FakeLoginItems loginItems;
        platform::install<platform::Alerts>(&alerts);
        platform::install<platform::LoginItems>(&loginItems);
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.path()));
        qputenv("HOME", QFile::encodeName(home.path()));
        installed = true;
    }
    return home.filePath(QStringLiteral("Kestrel Menu Preferences"));
}

} // namespace

KESTREL_FUZZ_TARGET(prefsfile) {
    QFile file(PrepareHome());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(reinterpret_cast<const char *>(data), qint64(size)) != qint64(size))
        std::abort();
    file.close();

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
