// How long a title's root menu takes to build and show, next to what cannot be
// avoided: reading the folder (readdir + lstat) and showing a bare menu of as
// many fixed texts. Runs on a real X server (scripts/bench.sh starts one).
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

#include <algorithm>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
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

// Icon lookups per entry: from an empty cache (every type asks the theme once
// within the folder), and with the cache as the running program keeps it.
double IconMicrosPerEntry(const QByteArray &folder, bool cold) {
    const FolderListing listing = ReadFolderEntries(folder, 0);
    return MedianMs(5,
                    [&] {
                        if (cold)
                            ClearFolderIconCache();
                        for (const FolderEntry &entry : listing.entries)
                            FolderEntryIcon(entry);
                    }) *
           1000.0 / double(std::max<std::size_t>(1, listing.entries.size()));
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

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    InstallMenuStyle();
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor"))
        QIcon::setThemeName(QStringLiteral("Adwaita")); // a full theme, as a desktop has
    generalSettings = kDefaultGeneralSettings;
    QTemporaryDir root;
    const QByteArray rootPath = QFile::encodeName(root.path());

    std::printf("Folder menus on %s, icon theme %s\n", qPrintable(QApplication::platformName()),
                qPrintable(QIcon::themeName()));
    std::printf("%8s %12s %12s %12s %12s %8s %12s %12s\n", "entries", "read ms", "bare menu ms",
                "floors ms", "menu ms", "ratio", "icon us cold", "icon us warm");
    bool met = true;
    FolderMenu(MakeFolder(rootPath, 10)); // first use: theme, MIME database, fonts
    for (const int count : {100, 1000, 10000, 50000}) {
        const QByteArray folder = MakeFolder(rootPath, count);
        // The three take turns, so that a busy moment of the machine falls on
        // all of them alike; each figure is the median of its runs.
        const int runs = count >= 50000 ? 3 : count >= 10000 ? 7 : 21;
        std::vector<double> reads, bares, menus;
        for (int run = 0; run < runs; ++run) {
            reads.push_back(TimeMs([&] { ReadFloor(folder); }));
            bares.push_back(TimeMs([&] { BareMenuFloor(count); }));
            menus.push_back(TimeMs([&] { FolderMenu(folder); }));
        }
        const double read = Median(reads);
        const double bare = Median(bares);
        const double menu = Median(menus);
        const double coldIcons = IconMicrosPerEntry(folder, true);
        const double warmIcons = IconMicrosPerEntry(folder, false);
        const double ratio = menu / (read + bare);
        met = met && ratio <= 1.3;
        std::printf("%8d %12.2f %12.2f %12.2f %12.2f %8.2f %12.3f %12.3f\n", count, read, bare,
                    read + bare, menu, ratio, coldIcons, warmIcons);
        std::fflush(stdout);
    }
    const QByteArray hundred = rootPath + "/hundred";
    mkdir(hundred.constData(), 0755);
    for (int i = 0; i < 100; ++i)
        Touch(hundred + "/Entry " + QByteArray::number(i) + kSuffixes[i % std::size(kSuffixes)]);
    std::printf("submenu of 100 entries opens in %.2f ms (target 16 ms)\n",
                SubmenuOpenMs(rootPath, hundred, 9));
    std::printf("submenu of 10000 entries opens again in %.2f ms\n",
                SubmenuOpenMs(rootPath, rootPath + "/folder-10000", 3));
    std::printf("root menu within 1.3x the floors at every size: %s\n", met ? "yes" : "NO");
    return 0;
}
