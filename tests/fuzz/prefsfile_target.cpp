// The preferences file: arbitrary bytes loaded as the file, in a home of the
// target's own (removed when the process ends); then the settings are put back.
#include "core/settings.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakeloginitems.h"
#include "platform/service.h"
#include "prefs/prefsfile.h"
#include "tests/fuzz/fuzztarget.h"

#include <QDir>
#include <QTemporaryDir>

KESTREL_FUZZ_TARGET(prefsfile) {
    static QTemporaryDir home(QDir::tempPath() + QStringLiteral("/kestrel-prefs-fuzz-XXXXXX"));
    static platform::FakeAlerts alerts;
    static platform::FakeLoginItems loginItems;
    [[maybe_unused]] static const bool installed = [] {
        platform::install<platform::Alerts>(&alerts);
        platform::install<platform::LoginItems>(&loginItems);
        return qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.path()));
    }();
    QFile file(home.filePath(QStringLiteral("Kestrel Menu Preferences")));
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
