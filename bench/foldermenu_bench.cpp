// How long a title's root menu takes to build and show, next to what cannot be
// avoided: reading the folder (readdir + lstat) and showing a bare menu of as
// many fixed texts. Runs on a real X server (scripts/bench.sh starts one).
#include "core/folders.h"
#include "foldermenus/buildsubmenu.h"
#include "foldermenus/foldercache.h"
#include "foldermenus/folderentries.h"
#include "foldermenus/menuicons.h"
#include "foldermenus/menustyle.h"
#include "titles/readymenu.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QIcon>
#include <QMenu>
#include <QTemporaryDir>
#include <QWindow>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <map>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

const char *const kSuffixes[] = {".txt",  ".pdf", ".png", ".jpg", ".mp3", ".odt", ".zip", ".tar.gz",
                                 ".html", ".c",   ".h",   ".py",  ".svg", ".mkv", ""};

void Touch(const QByteArray &path) {
    close(open(path.constData(), O_WRONLY | O_CREAT, 0644));
}

// A folder of `count` entries: mostly files of common types, a tenth folders, a
// twentieth links (to files and folders), a twentieth hidden by a dot, and a
// ".hidden" file listing a few more.
QByteArray MakeFolder(const QByteArray &root, int count) {
    const QByteArray folder = root + "/folder-" + QByteArray::number(count);
    mkdir(folder.constData(), 0755);
    QByteArray hidden;
    for (int i = 0; i < count; ++i) {
        const QByteArray stem = folder + "/Item " + QByteArray::number(i * 7919 % 100003);
        if (i % 10 == 1) {
            mkdir(stem.constData(), 0755);
        } else if (i % 20 == 2) {
            symlink((folder + "/Item " + QByteArray::number((i - 1) * 7919 % 100003)).constData(),
                    (stem + " link").constData());
        } else if (i % 20 == 3) {
            Touch(folder + "/.dot " + QByteArray::number(i));
        } else {
            Touch(stem + kSuffixes[i % std::size(kSuffixes)]);
            if (i % 50 == 4)
                hidden += "Item " + QByteArray::number(i * 7919 % 100003) +
                          kSuffixes[i % std::size(kSuffixes)] + '\n';
        }
    }
    QFile file(QFile::decodeName(folder + "/.hidden"));
    if (file.open(QIODevice::WriteOnly))
        file.write(hidden);
    return folder;
}

double TimeMs(const std::function<void()> &work) {
    QElapsedTimer timer;
    timer.start();
    work();
    const double ms = double(timer.nsecsElapsed()) / 1e6;
    QApplication::processEvents();
    return ms;
}

double Median(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

double MedianMs(int runs, const std::function<void()> &work) {
    std::vector<double> times;
    for (int i = 0; i < runs; ++i)
        times.push_back(TimeMs(work));
    return Median(times);
}

// Pops the menu up and returns once it is on screen and painted.
void Show(QMenu *menu) {
    menu->popup(QPoint(0, 0));
    QWindow *window = menu->windowHandle();
    for (int i = 0; i < 2000 && (window == nullptr || !window->isExposed()); ++i) {
        QApplication::processEvents(QEventLoop::AllEvents, 5);
        window = menu->windowHandle();
    }
    QApplication::processEvents();
    QApplication::sync();
}

void ReadFloor(const QByteArray &folder) {
    DIR *dir = opendir(folder.constData());
    struct stat info {};
    while (const dirent *entry = readdir(dir))
        fstatat(dirfd(dir), entry->d_name, &info, AT_SYMLINK_NOFOLLOW);
    closedir(dir);
}

void BareMenuFloor(int count) {
    QMenu menu;
    for (int i = 0; i < count; ++i)
        menu.addAction(QStringLiteral("Item 10000.txt"));
    Show(&menu);
    menu.hide();
}

void FolderMenu(const QByteArray &folder) {
    MenuSpec spec{};
    spec.folder = FSSpec{folder};
    ReadyMenu title{};
    title.menuSpec = &spec;
    InitializeFolderCachedMenu(&title);
    Show(title.cachedMenu);
    title.cachedMenu->hide();
    DestroyFolderCachedMenu(&title);
}

// Opening a submenu (again and again: each opening empties and refills it) whose
// folder is `inner`, reached through a link in a folder of its own.
double SubmenuOpenMs(const QByteArray &root, const QByteArray &inner, int runs) {
    const QByteArray parent = root + "/opens-" + QByteArray::number(qHash(inner));
    mkdir(parent.constData(), 0755);
    symlink(inner.constData(), (parent + "/Inner").constData());
    MenuSpec spec{};
    spec.folder = FSSpec{parent};
    ReadyMenu title{};
    title.menuSpec = &spec;
    InitializeFolderCachedMenu(&title);
    QMenu *menu = title.cachedMenu;
    SetUpDepthMenus(menu);
    // The item stands selected in the (hidden) root; the submenu fills itself as
    // it opens, exactly as when the pointer rests on the item.
    menu->setActiveAction(menu->actions().first());
    const double ms = MedianMs(runs, [&] {
        QMenu *sub = subMenuRef[1];
        Show(sub);
        sub->hide();
    });
    TearDownDepthMenus();
    DestroyFolderCachedMenu(&title);
    return ms;
}

// The generated folders, made once per size for the whole run.
QByteArray Folder(int count) {
    static QTemporaryDir root;
    static std::map<int, QByteArray> made;
    auto found = made.find(count);
    if (found == made.end())
        found = made.emplace(count, MakeFolder(QFile::encodeName(root.path()), count)).first;
    return found->second;
}

QByteArray Root() {
    return ParentPath(Folder(10));
}

// Building and showing a title's root menu, next to its two floors: reading the
// folder and showing a bare menu of as many texts. The three take turns, so that
// a busy moment of the machine falls on all of them alike; the counters are
// medians, the ratio is the menu over the floors' sum.
void BM_RootMenu(benchmark::State &state) {
    const int count = int(state.range(0));
    const QByteArray folder = Folder(count);
    std::vector<double> reads, bares, menus;
    for (auto _ : state) {
        reads.push_back(TimeMs([&] { ReadFloor(folder); }));
        bares.push_back(TimeMs([&] { BareMenuFloor(count); }));
        menus.push_back(TimeMs([&] { FolderMenu(folder); }));
        state.SetIterationTime(menus.back() / 1000.0);
    }
    const double read = Median(reads);
    const double bare = Median(bares);
    const double menu = Median(menus);
    state.counters["read_ms"] = read;
    state.counters["bare_menu_ms"] = bare;
    state.counters["floors_ms"] = read + bare;
    state.counters["menu_ms"] = menu;
    state.counters["ratio"] = menu / (read + bare);
}
BENCHMARK(BM_RootMenu)->Arg(100)->Iterations(21)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RootMenu)->Arg(1000)->Iterations(21)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RootMenu)->Arg(10000)->Iterations(7)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RootMenu)->Arg(50000)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);

// Icon lookups per entry, from an empty cache (every type asks the theme once
// within the folder: argument 1) and with the cache as the running program keeps
// it (argument 0).
void BM_MenuIcons(benchmark::State &state) {
    const FolderListing listing = ReadFolderEntries(Folder(int(state.range(0))), 0);
    const bool cold = state.range(1) != 0;
    double total = 0;
    for (auto _ : state) {
        if (cold)
            ClearFolderIconCache();
        const double ms = TimeMs([&] {
            for (const FolderEntry &entry : listing.entries)
                benchmark::DoNotOptimize(FolderEntryIcon(entry));
        });
        total += ms;
        state.SetIterationTime(ms / 1000.0);
    }
    state.counters["us_per_entry"] =
        total * 1000.0 /
        (double(std::max<std::size_t>(1, listing.entries.size())) * double(state.iterations()));
}
BENCHMARK(BM_MenuIcons)
    ->ArgsProduct({{100, 1000, 10000, 50000}, {1, 0}})
    ->ArgNames({"entries", "cold"})
    ->Iterations(5)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

// Opening a submenu (again: each opening empties and refills it).
void BM_SubmenuOpen(benchmark::State &state) {
    const QByteArray inner = Folder(int(state.range(0)));
    std::vector<double> times;
    for (auto _ : state) {
        times.push_back(SubmenuOpenMs(Root(), inner, 1));
        state.SetIterationTime(times.back() / 1000.0);
    }
    state.counters["open_ms"] = Median(times);
}
BENCHMARK(BM_SubmenuOpen)->Arg(100)->Iterations(9)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SubmenuOpen)
    ->Arg(10000)
    ->Iterations(3)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    InstallMenuStyle();
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor"))
        QIcon::setThemeName(QStringLiteral("Adwaita")); // a full theme, as a desktop has
    generalSettings = kDefaultGeneralSettings;
    benchmark::AddCustomContext("platform", QApplication::platformName().toStdString());
    benchmark::AddCustomContext("icon theme", QIcon::themeName().toStdString());
    FolderMenu(Folder(10)); // first use: theme, MIME database, fonts
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
