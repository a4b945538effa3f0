// Folder menus on a real X server (scripts/bench.sh starts one), timed from the
// click until the menu is painted, side by side in one run with what cannot be
// avoided: reading the folder (readdir + lstat) and showing one screenful of a
// bare menu. Also one keystroke of the filter, the memory of an open menu and
// the heap across a thousand clicks.
#include "core/folders.h"
#include "foldermenus/buildsubmenu.h"
#include "foldermenus/clickfoldermenu.h"
#include "foldermenus/foldercache.h"
#include "foldermenus/foldermenu.h"
#include "foldermenus/foldermenumodel.h"
#include "foldermenus/folderreading.h"
#include "foldermenus/menustyle.h"
#include "platform/folderreader.h"
#include "platform/service.h"
#include "platform/xcbpointer.h"
#include "titles/readymenu.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QIcon>
#include <QKeyEvent>
#include <QMenu>
#include <QProxyStyle>
#include <QStyle>
#include <QTemporaryDir>
#include <QTimer>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <malloc.h>
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

QTemporaryDir &Scratch() {
    static QTemporaryDir root;
    return root;
}

// The generated folders, made once per size for the whole run.
QByteArray Folder(int count) {
    static std::map<int, QByteArray> made;
    auto found = made.find(count);
    if (found == made.end())
        found = made.emplace(count, MakeFolder(QFile::encodeName(Scratch().path()), count)).first;
    return found->second;
}

// A folder holding one link, "Inner", to `inner`: its submenu is the one timed.
QByteArray LinkTo(const QByteArray &inner) {
    const QByteArray parent = inner + "-parent";
    mkdir(parent.constData(), 0755);
    symlink(inner.constData(), (parent + "/Inner").constData());
    return parent;
}

// Lets the event loop run for `ms`, as the program does between two clicks.
void Idle(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

double Median(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

double Ms(const QElapsedTimer &timer) {
    return double(timer.nsecsElapsed()) / 1e6;
}

// Notes when `menu` has painted its rows (not a stand-in) since the last look.
class PaintWatch : public QObject {
public:
    explicit PaintWatch(QWidget *menu) : menu_(menu) { menu->installEventFilter(this); }
    ~PaintWatch() override { menu_->removeEventFilter(this); }
    bool painted = false;
    // Runs the event loop until the menu has painted, and the X server has it.
    void wait() {
        painted = false;
        QElapsedTimer waited;
        waited.start();
        while (!painted && waited.elapsed() < 10000)
            QApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        QGuiApplication::sync();
    }

protected:
    bool eventFilter(QObject *, QEvent *event) override {
        const auto *folderMenu = qobject_cast<FolderMenu *>(menu_);
        if (event->type() == QEvent::Paint &&
            (folderMenu == nullptr || folderMenu->model()->isComplete()))
            painted = true;
        return false;
    }

private:
    QWidget *menu_;
};

struct Title {
    explicit Title(const QByteArray &folder) {
        spec.folder = FSSpec{folder};
        record.menuSpec = &spec;
    }
    ~Title() {
        TearDownDepthMenus();
        DestroyFolderCachedMenu(&record);
    }
    MenuSpec spec{};
    ReadyMenu record{};
};

void CloseAndSettle(QWidget *menu) {
    menu->close();
    QApplication::processEvents();
}

// The floors: the folder read alone, and a bare menu of one screenful of texts.
double ReadFloorMs(const QByteArray &folder) {
    QElapsedTimer timer;
    timer.start();
    DIR *dir = opendir(folder.constData());
    struct stat info {};
    while (const dirent *entry = readdir(dir))
        fstatat(dirfd(dir), entry->d_name, &info, AT_SYMLINK_NOFOLLOW);
    closedir(dir);
    return Ms(timer);
}

int ScreenfulOfRows() {
    QMenu probe;
    probe.addAction(QStringLiteral("Item 10000.txt"));
    const int row = qMax(1, probe.actionGeometry(probe.actions().first()).height());
    return QGuiApplication::primaryScreen()->availableGeometry().height() / row;
}

double BareMenuFloorMs() {
    static const int rows = ScreenfulOfRows();
    QMenu menu;
    for (int i = 0; i < rows; ++i)
        menu.addAction(QStringLiteral("Item 10000.txt"));
    PaintWatch watch(&menu);
    QElapsedTimer timer;
    timer.start();
    menu.popup(QPoint(10, 26));
    watch.wait();
    const double ms = Ms(timer);
    CloseAndSettle(&menu);
    return ms;
}

void ReportFloors(benchmark::State &state, const std::vector<double> &reads,
                  const std::vector<double> &bares, const std::vector<double> &menus) {
    const double read = Median(reads);
    const double bare = Median(bares);
    const double menu = Median(menus);
    state.counters["read_ms"] = read;
    state.counters["bare_menu_ms"] = bare;
    state.counters["floors_ms"] = read + bare;
    state.counters["menu_ms"] = menu;
    state.counters["ratio"] = menu / (read + bare);
}

// A title's root menu: built, popped up and painted, as at a first click; the
// three measures take turns, so that a busy moment falls on all alike.
void BM_RootMenu(benchmark::State &state) {
    const QByteArray folder = Folder(int(state.range(0)));
    std::vector<double> reads, bares, menus, again;
    for (auto _ : state) {
        reads.push_back(ReadFloorMs(folder));
        bares.push_back(BareMenuFloorMs());
        Title title(folder);
        QElapsedTimer timer;
        timer.start();
        FolderMenu *menu = ReadyFolderMenu(&title.record);
        PaintWatch watch(menu);
        menu->openAt(QPoint(10, 26));
        watch.wait();
        menus.push_back(Ms(timer));
        state.SetIterationTime(menus.back() / 1000.0);
        CloseAndSettle(menu);
        // The same menu again, as the cache keeps it.
        timer.start();
        menu->openAt(QPoint(10, 26));
        watch.wait();
        again.push_back(Ms(timer));
        CloseAndSettle(menu);
    }
    ReportFloors(state, reads, bares, menus);
    state.counters["cached_ms"] = Median(again);
}

// A submenu opening (Right on its item), its folder read afresh each time.
void BM_Submenu(benchmark::State &state) {
    Title title(LinkTo(Folder(int(state.range(0)))));
    FolderMenu *root = ReadyFolderMenu(&title.record);
    SetUpDepthMenus(root);
    root->openAt(QPoint(10, 26));
    QApplication::processEvents();
    std::vector<double> reads, bares, menus;
    for (auto _ : state) {
        reads.push_back(ReadFloorMs(Folder(int(state.range(0)))));
        bares.push_back(BareMenuFloorMs());
        root->setActiveItem(1);
        PaintWatch watch(subMenuRef[1]);
        QElapsedTimer timer;
        timer.start();
        QKeyEvent right(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier);
        QApplication::sendEvent(root, &right);
        watch.wait();
        menus.push_back(Ms(timer));
        state.SetIterationTime(menus.back() / 1000.0);
        CloseAndSettle(subMenuRef[1]);
    }
    CloseAndSettle(root);
    ReportFloors(state, reads, bares, menus);
}

// One keystroke of the filter in an open menu, the folded names made afresh
// (the first keystroke, the dearest), and one more narrowing it.
void BM_FilterKeystroke(benchmark::State &state) {
    Title title(Folder(int(state.range(0))));
    FolderMenu *menu = ReadyFolderMenu(&title.record);
    while (!menu->model()->isComplete())
        Idle(5);
    menu->openAt(QPoint(10, 26));
    PaintWatch watch(menu);
    watch.wait();
    std::vector<double> first, next;
    const auto type = [&](Qt::Key key, const QString &text) {
        QElapsedTimer timer;
        timer.start();
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
        QApplication::sendEvent(menu, &press);
        watch.wait();
        return Ms(timer);
    };
    for (auto _ : state) {
        first.push_back(type(Qt::Key_4, QStringLiteral("4")));
        next.push_back(type(Qt::Key_2, QStringLiteral("2")));
        state.SetIterationTime(first.back() / 1000.0);
        type(Qt::Key_Escape, QString());
    }
    CloseAndSettle(menu);
    state.counters["first_key_ms"] = Median(first);
    state.counters["next_key_ms"] = Median(next);
}

double ResidentMb() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toDouble() / 1024.0;
    }
    return 0;
}

double HeapKb() {
    const struct mallinfo2 info = mallinfo2();
    return double(info.uordblks + info.hblkhd) / 1024.0;
}

// What an open menu of this many entries holds above the idle program.
void BM_OpenMenuMemory(benchmark::State &state) {
    const QByteArray folder = Folder(int(state.range(0)));
    for (auto _ : state) {
        malloc_trim(0);
        const double residentBefore = ResidentMb();
        const double heapBefore = HeapKb();
        Title title(folder);
        FolderMenu *menu = ReadyFolderMenu(&title.record);
        PaintWatch watch(menu);
        menu->openAt(QPoint(10, 26));
        watch.wait();
        state.counters["resident_mb"] = ResidentMb() - residentBefore;
        state.counters["heap_mb"] = (HeapKb() - heapBefore) / 1024.0;
        CloseAndSettle(menu);
    }
}

// Clicks on a title, each walking into a submenu and out again, as a user
// does; the live heap before and after a thousand of them.
void BM_ClickCycles(benchmark::State &state) {
    const QByteArray folder = Scratch().path().toUtf8() + "/cycles";
    mkdir(folder.constData(), 0755);
    mkdir((folder + "/A sub").constData(), 0755);
    for (const char *name : {"/A sub/a.txt", "/A sub/b.pdf", "/c.png", "/d"})
        Touch(folder + name);
    Title title(folder);
    QTimer hands;
    hands.setInterval(1);
    int step = 0;
    QObject::connect(&hands, &QTimer::timeout, [&] {
        auto *front = qobject_cast<FolderMenu *>(QApplication::activePopupWidget());
        if (front == nullptr)
            return;
        const Qt::Key key = step == 0 ? Qt::Key_Right : Qt::Key_Escape;
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        if (step == 0)
            front->setActiveItem(1);
        QApplication::sendEvent(front, &press);
        step = step == 0 ? 1 : step + 1;
    });
    hands.start();
    const auto click = [&] {
        step = 0;
        pulledReadyMenu = &title.record;
        ClickFolderMenu(QPoint(10, 26), &title.record, true);
        pulledReadyMenu = nullptr;
    };
    for (auto _ : state) {
        for (int i = 0; i < 50; ++i) // caches filled, first allocations made
            click();
        Idle(500);
        malloc_trim(0);
        const double before = HeapKb();
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < 1000; ++i)
            click();
        const double ms = Ms(timer);
        // Menus dropped during the clicks are freed once nothing is pulled.
        Idle(500);
        malloc_trim(0);
        state.counters["heap_growth_kb"] = HeapKb() - before;
        state.counters["ms_per_click"] = ms / 1000.0;
        state.SetIterationTime(ms / 1000.0);
    }
}

// Each size of a menu; small sizes take more turns, as a busy moment of the
// machine weighs more on them.
void RegisterSizes(const char *name, void (*function)(benchmark::State &)) {
    for (const int entries : {100, 1000, 10000, 50000, 100000})
        benchmark::RegisterBenchmark(name, function)
            ->Arg(entries)
            ->Iterations(entries <= 10000 ? 15 : 7)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
}

} // namespace

// First, while the program is as fresh as after its start.
BENCHMARK(BM_OpenMenuMemory)->Arg(100000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FilterKeystroke)
    ->Arg(50000)
    ->Iterations(9)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ClickCycles)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    InstallMenuStyle();
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor"))
        QIcon::setThemeName(QStringLiteral("Adwaita")); // a full theme, as a desktop has
    generalSettings = kDefaultGeneralSettings;
    platform::FileSystemFolderReader reader;
    const platform::ScopedService<platform::FolderReader> readerInstalled(&reader);
    platform::XcbPointer pointer;
    const platform::ScopedService<platform::Pointer> pointerInstalled(&pointer);
    benchmark::AddCustomContext("platform", QApplication::platformName().toStdString());
    benchmark::AddCustomContext("icon theme", QIcon::themeName().toStdString());
    const auto *proxy = qobject_cast<const QProxyStyle *>(QApplication::style());
    benchmark::AddCustomContext(
        "style",
        (proxy != nullptr ? proxy->baseStyle() : QApplication::style())->name().toStdString());
    {
        Title warmUp(Folder(100)); // first use: theme, MIME database, fonts
        FolderMenu *menu = ReadyFolderMenu(&warmUp.record);
        menu->openAt(QPoint(10, 26));
        QApplication::processEvents();
        CloseAndSettle(menu);
    }
    RegisterSizes("BM_RootMenu", BM_RootMenu);
    RegisterSizes("BM_Submenu", BM_Submenu);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    FolderReadingsFinished(5000);
    return 0;
}
