// Reading and writing the preferences file, as at every start and quit.
#include "core/settings.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakeloginitems.h"
#include "platform/service.h"
#include "prefs/prefsfile.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <cstdlib>

namespace {

void ClearMenus() {
    while (firstMenuSpec != nullptr)
        RemoveMenuFromPreferences(firstMenuSpec);
}

// A file as a user with `menus` folder menus has it.
void MakeSettings(int menus) {
    ClearMenus();
    OSErr status = noErr;
    for (int i = 0; i < menus; ++i) {
        const FSSpec folder{"/home/user/.config/Kestrel Menu Items " + QByteArray::number(i)};
        AddMenuToPreferences(&status, kSideLeft, kContentsFolder, kTitleColourPicture, &folder);
    }
}

void BM_SavePreferences(benchmark::State &state) {
    MakeSettings(int(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(SavePreferences());
}
BENCHMARK(BM_SavePreferences)->Arg(2)->Arg(50)->Unit(benchmark::kMicrosecond);

void BM_LoadPreferences(benchmark::State &state) {
    MakeSettings(int(state.range(0)));
    SavePreferences();
    for (auto _ : state) {
        ClearMenus();
        benchmark::DoNotOptimize(LoadPreferences());
    }
}
BENCHMARK(BM_LoadPreferences)->Arg(2)->Arg(50)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv) {
    QCoreApplication application(argc, argv);
    QTemporaryDir home;
    ::setenv("XDG_CONFIG_HOME", QFile::encodeName(home.path()).constData(), 1);
    platform::FakeAlerts alerts;
    platform::FakeLoginItems loginItems;
    platform::install<platform::Alerts>(&alerts);
    platform::install<platform::LoginItems>(&loginItems);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
