// Clicking the real program's title on a private desktop (Xvfb, openbox, a
// session bus with a fake file manager that records every request): the menu
// walked with the keyboard and the mouse as a user would, with xdotool; the
// context menu of an item, a drag out of the menu, the menu asked for by a
// second start, and titles added and removed from the program's commands.
#include "tests/support/desktopsession.h"
#include "tests/support/tempenvironment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPoint>
#include <gtest/gtest.h>

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

struct Request {
    QString method;
    QList<QByteArray> paths;
    friend bool operator==(const Request &, const Request &) = default;
};

void PrintTo(const Request &request, std::ostream *out) {
    *out << request.method.toStdString();
    for (const QByteArray &path : request.paths)
        *out << ' ' << path.constData();
}

class ClickDesktopTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(session.failure().isEmpty());
        environment = session.environment(env.processEnvironment());
        environment.insert(u"QT_LOGGING_RULES"_s, u"kestrel.*=true"_s);

        // The file manager owns its name before the program looks for it.
        session.start(QStringLiteral(KESTREL_FAKE_FILEMANAGER), {requestLog}, environment);
        ASSERT_TRUE(WaitFor([&] { return QFile::exists(requestLog); }));
        // A tree three levels deep, and a link to a folder elsewhere.
        ASSERT_TRUE(QDir().mkpath(QFile::decodeName(menuFolder() + "/Deep/Middle/Inner/Target")));
        WriteFile(menuFolder() + "/Deep/Middle/Inner/note one.txt", "note\n");
        ASSERT_TRUE(QDir().mkpath(QFile::decodeName(env.root() + "/Elsewhere/Real folder")));
        ASSERT_EQ(::symlink((env.root() + "/Elsewhere/Real folder").constData(),
                            (menuFolder() + "/Deep/Middle/Inner/Shortcut").constData()),
                  0);

        // The only terminal is one that records where it was started; no
        // desktop names another, and no folder holds xdg-terminal-exec.
        WriteFile(env.root() + "/bin/x-terminal-emulator",
                  "#!/bin/sh\necho \"$PWD $#\" >>'" + env.root() + "/terminal.log'\n");
        ASSERT_EQ(::chmod((env.root() + "/bin/x-terminal-emulator").constData(), 0755), 0);
        QStringList path{QFile::decodeName(env.root() + "/bin")};
        for (const QString &folder : environment.value(u"PATH"_s).split(u':'))
            if (!QFile::exists(folder + u"/xdg-terminal-exec"_s))
                path.append(folder);
        environment.insert(u"PATH"_s, path.join(u':'));
        environment.remove(u"XDG_CURRENT_DESKTOP"_s);
        StartProgram();
    }

    void StartProgram() {
        log_.clear();
        program = session.start(QStringLiteral(KESTREL_PROGRAM), {}, environment);
        ASSERT_TRUE(WaitFor([&] { return log().contains("owns example.kestrelmenu"); }, 15000))
            << log().constData();
    }

    void TearDown() override {
        if (program != nullptr)
            DesktopSession::stop(program);
    }

    void Xdotool(const QString &arguments) const {
        session.run(u"xdotool"_s, arguments.split(u' '));
    }

    const QByteArray &log() {
        log_ += program->readAllStandardError();
        return log_;
    }
    // Waits until `text` has shown in the log `count` times in all.
    bool WaitForLog(const QByteArray &text, qsizetype count) {
        return WaitFor([&] { return log().count(text) >= count; }, 8000);
    }

    QByteArray menuFolder() const { return env.configHome() + "/Kestrel Menu Items"; }

    // The requests the file manager has had, after its start.
    QList<Request> Requests() const {
        QList<Request> requests;
        QFile file(requestLog);
        if (!file.open(QIODevice::ReadOnly))
            return requests;
        for (const QByteArray &line : file.readAll().split('\n')) {
            const QJsonObject object = QJsonDocument::fromJson(line).object();
            const QString method = object.value(u"method"_s).toString();
            if (method.isEmpty() || method == u"Started"_s)
                continue;
            Request request{method, {}};
            for (const QJsonValue &uri : object.value(u"uris"_s).toArray())
                request.paths.append(
                    QByteArray::fromPercentEncoding(uri.toString().toLatin1().mid(7)));
            requests.append(request);
        }
        return requests;
    }
    QList<Request> WaitForRequests(qsizetype count) const {
        WaitFor([&] { return Requests().size() >= count; }, 8000);
        return Requests();
    }

    // Presses the title (and lets go of it unless `hold`); returns once its menu shows.
    void PressTitle(bool hold = false) {
        const qsizetype shown = log().count("menu 256 shown");
        Xdotool(hold ? u"mousemove 20 10 mousedown 1"_s : u"mousemove 20 10 click 1"_s);
        ASSERT_TRUE(WaitForLog("menu 256 shown", shown + 1)) << log().constData();
    }
    // Keys pressed in order: a key opening a submenu is handled before the next.
    void Keys(const QString &keys) { Xdotool(u"key "_s + keys); }
    // Chooses with `choose` while `modifiers` are held; returns once the menu has closed.
    void ChooseWith(const QStringList &modifiers, const QString &choose) {
        const qsizetype closed = log().count("menu closed");
        for (const QString &modifier : modifiers)
            Xdotool(u"keydown "_s + modifier);
        Keys(choose);
        ASSERT_TRUE(WaitForLog("menu closed", closed + 1)) << log().constData();
        for (const QString &modifier : modifiers)
            Xdotool(u"keyup "_s + modifier);
    }
    // To the innermost folder's menu (Deep, Middle, Inner), typing what finds an item there.
    void WalkToInner(const QString &typed = {}) {
        PressTitle();
        Keys(u"d e e p Right Right Right "_s + typed);
    }
    // The entry of the highlighted item's context menu that `mnemonic` takes.
    void ContextCommand(const QString &mnemonic) {
        const qsizetype shown = log().count("context menu of");
        Keys(u"Menu"_s);
        ASSERT_TRUE(WaitForLog("context menu of", shown + 1)) << log().constData();
        ChooseWith({}, mnemonic);
    }
    // Where the titles stand: their left edges, in order.
    QList<int> TitleLefts() const {
        QList<int> lefts;
        for (const QByteArray &line :
             session
                 .run(u"xdotool"_s, u"search --onlyvisible --name ^Kestrel.Menu.title$ "
                                    u"getwindowgeometry --shell %@"_s.split(u' '))
                 .split('\n'))
            if (line.startsWith("X="))
                lefts.append(line.mid(2).toInt());
        std::sort(lefts.begin(), lefts.end());
        return lefts;
    }
    QByteArray trash() const { return env.root() + "/home/.local/share/Trash"; }

    TempEnvironment env;
    DesktopSession session;
    QString requestLog = QFile::decodeName(env.root() + "/filemanager.log");
    QProcessEnvironment environment;
    QProcess *program = nullptr;
    QByteArray log_;
};

TEST_F(ClickDesktopTest, ItemsThreeLevelsDownOpenRevealAndShowTheirPropertiesByTheKeysHeld) {
    const QByteArray inner = menuFolder() + "/Deep/Middle/Inner";
    const QByteArray note = inner + "/note one.txt";

    // No modifier: the folder chosen itself (Space) opens in the file manager.
    WalkToInner(u"t a r g"_s);
    ChooseWith({}, u"space"_s);
    // Ctrl reveals, Shift shows the properties, Ctrl wins over Shift.
    for (const QStringList &held :
         {QStringList{u"ctrl"_s}, QStringList{u"shift"_s}, QStringList{u"ctrl"_s, u"shift"_s}}) {
        WalkToInner(u"n o t e"_s);
        ChooseWith(held, u"Return"_s);
    }
    // A link to a folder stands for the folder it points to.
    WalkToInner(u"s h o r"_s);
    ChooseWith({}, u"space"_s);

    EXPECT_EQ(WaitForRequests(5),
              (QList<Request>{{u"ShowFolders"_s, {inner + "/Target"}},
                              {u"ShowItems"_s, {note}},
                              {u"ShowItemProperties"_s, {note}},
                              {u"ShowItems"_s, {note}},
                              {u"ShowFolders"_s, {env.root() + "/Elsewhere/Real folder"}}}))
        << log().constData();
    EXPECT_EQ(log().count("menu closed: menu 259"), 5) << log().constData();
}

TEST_F(ClickDesktopTest, TheMouseChoosesAFolderByReleasingOnItAndNothingOutsideTheMenu) {
    // Pressed on the title, dragged along `path` and let go at its end.
    const auto pressAndDrag = [&](const QList<QPoint> &path) {
        PressTitle(true);
        for (const QPoint &point : path)
            Xdotool(u"mousemove --sync %1 %2"_s.arg(point.x()).arg(point.y()));
        const qsizetype closed = log().count("menu closed");
        Xdotool(u"mouseup 1"_s);
        ASSERT_TRUE(WaitForLog("menu closed", closed + 1)) << log().constData();
    };
    // The root menu's items, top-down from y 26: Applications, Deep, ...
    pressAndDrag({{30, 20}, {40, 30}, {40, 45}, {40, 60}});
    EXPECT_EQ(WaitForRequests(1), (QList<Request>{{u"ShowFolders"_s, {menuFolder() + "/Deep"}}}));

    // Let go far from every menu: nothing is sent.
    pressAndDrag({{40, 40}, {300, 300}, {600, 400}});
    EXPECT_TRUE(log().contains("menu closed: menu 0 item 0 chosen")) << log().constData();
    // A plain click leaves the menu open for the keys.
    PressTitle();
    ChooseWith({}, u"h o m e space"_s);
    EXPECT_EQ(WaitForRequests(2).value(1), (Request{u"ShowFolders"_s, {env.home()}}));
}

TEST_F(ClickDesktopTest, EscapeClosesTheMenusOneByOneAndSendsNothing) {
    // Each submenu closes; the root first forgets what was typed into it.
    WalkToInner();
    Keys(u"Escape Escape Escape Escape Escape"_s);
    ASSERT_TRUE(WaitForLog("menu closed: menu 0 item 0 chosen", 1)) << log().constData();
    // A click afterwards is answered as ever; nothing has reached the file manager.
    PressTitle();
    ChooseWith({}, u"Escape"_s);
    EXPECT_TRUE(Requests().isEmpty());
}

TEST_F(ClickDesktopTest, ARightClickOpensTheContextMenuAndSendsNothing) {
    PressTitle();
    // Deep, the root menu's second item.
    Xdotool(u"mousemove 40 59 click 3"_s);
    ASSERT_TRUE(WaitForLog("context menu of Deep", 1)) << log().constData();
    ChooseWith({}, u"Escape Escape"_s);
    EXPECT_TRUE(log().contains("menu closed: menu 0 item 0 chosen")) << log().constData();
    EXPECT_TRUE(Requests().isEmpty());
}

TEST_F(ClickDesktopTest, OpenInTerminalStartsTheTerminalInTheFolder) {
    PressTitle();
    Keys(u"d e e p"_s);
    ContextCommand(u"t"_s);
    EXPECT_TRUE(WaitFor([&] { return !ReadFile(env.root() + "/terminal.log").isEmpty(); }));
    EXPECT_EQ(ReadFile(env.root() + "/terminal.log"), menuFolder() + "/Deep 0\n");
}

TEST_F(ClickDesktopTest, TheTrashTakesAnItemAndRemovingALinkFromTheMenuNeverItsTarget) {
    const QByteArray target = env.root() + "/Elsewhere/kept.txt";
    WriteFile(target, "kept\n");
    ASSERT_EQ(::symlink(target.constData(), (menuFolder() + "/Kept link").constData()), 0);

    WalkToInner(u"n o t e"_s);
    ContextCommand(u"a"_s);
    ASSERT_TRUE(
        WaitFor([&] { return QFile::exists(QFile::decodeName(trash() + "/files/note one.txt")); }));
    EXPECT_TRUE(
        ReadFile(trash() + "/info/note one.txt.trashinfo")
            .contains("Path=" +
                      (menuFolder() + "/Deep/Middle/Inner/note one.txt").toPercentEncoding("/")));

    PressTitle();
    Keys(u"k e p t"_s);
    ContextCommand(u"m"_s);
    ASSERT_TRUE(WaitFor(
        [&] { return QFileInfo(QFile::decodeName(trash() + "/files/Kept link")).isSymLink(); }));
    EXPECT_EQ(ReadFile(target), "kept\n");
    EXPECT_TRUE(Requests().isEmpty());
}

TEST_F(ClickDesktopTest, AnItemDraggedOutOfTheMenuDropsItsAddress) {
    QProcess *target =
        session.start(QStringLiteral(KESTREL_TITLES_WINDOW), {u"target"_s}, environment);
    ASSERT_TRUE(WaitFor([&] { return target->canReadLine(); })); // shown at (400, 300), 200 by 120
    target->readLine();
    PressTitle();
    // Pressed on Deep and carried over the target, where it is let go.
    Xdotool(u"mousemove --sync 40 59 mousedown 1 mousemove --sync 45 70 mousemove --sync 60 90"_s);
    ASSERT_TRUE(WaitForLog("out of the menu", 1)) << log().constData();
    for (const int x : {470, 480, 490, 500})
        Xdotool(u"mousemove --sync %1 370"_s.arg(x));
    ASSERT_TRUE(WaitFor([&] { return target->readAll().contains("over"); }));
    Xdotool(u"mouseup 1"_s);
    ASSERT_TRUE(WaitFor([&] { return target->canReadLine(); }));
    EXPECT_EQ(target->readLine().trimmed(),
              "took file://" + (menuFolder() + "/Deep").toPercentEncoding("/"));
}

TEST_F(ClickDesktopTest, ADragRestingOnTheTitleOpensItsMenuAndAFolderItemTakesTheDrop) {
    const QByteArray file = env.root() + "/Elsewhere/dropped.txt";
    WriteFile(file, "dropped\n");
    QProcess *source = session.start(QStringLiteral(KESTREL_TITLES_WINDOW),
                                     {u"drag"_s, QFile::decodeName("file://" + file)}, environment);
    ASSERT_TRUE(WaitFor([&] { return source->canReadLine(); })); // shown at (400, 300)
    source->readLine();
    Xdotool(
        u"mousemove --sync 450 350 mousedown 1 mousemove --sync 100 50 mousemove --sync 20 10"_s);
    ASSERT_TRUE(WaitForLog("menu 256 shown", 1)) << log().constData();
    // Over Deep, stirred until the drag source has told the menu where it is.
    int stir = 0;
    ASSERT_TRUE(WaitFor([&] {
        Xdotool(u"mousemove --sync 40 %1"_s.arg(58 + (stir ^= 1)));
        return log().contains("files over Deep");
    })) << log().constData();
    Xdotool(u"mouseup 1"_s);
    ASSERT_TRUE(WaitFor([&] { return source->canReadLine(); }));
    EXPECT_EQ(source->readLine().trimmed(), "dropped link");
    EXPECT_EQ(QFileInfo(QFile::decodeName(menuFolder() + "/Deep/dropped.txt")).symLinkTarget(),
              QFile::decodeName(file));
}

TEST_F(ClickDesktopTest, ASecondStartPopsTheMenuUpAtThePointerReadyForTheKeys) {
    Xdotool(u"mousemove 600 400"_s);
    QProcess *second = session.start(QStringLiteral(KESTREL_PROGRAM), {}, environment);
    ASSERT_TRUE(second->waitForFinished(10000));
    EXPECT_EQ(second->exitCode(), 0);
    EXPECT_TRUE(second->readAllStandardError().contains("its menu pops up"));
    ASSERT_TRUE(WaitForLog("menu 256 shown", 1)) << log().constData();
    ChooseWith({}, u"h o m e space"_s);
    EXPECT_EQ(WaitForRequests(1), (QList<Request>{{u"ShowFolders"_s, {env.home()}}}));
}

TEST_F(ClickDesktopTest, ANewTitleForAFolderStandsAfterTheFirstUntilItIsRemoved) {
    const QByteArray folder = env.root() + "/Elsewhere";
    PressTitle();
    Keys(u"Up Right n"_s); // the program's commands are the last submenu
    QByteArray dialog;
    ASSERT_TRUE(WaitFor([&] {
        dialog = session
                     .run(u"xdotool"_s,
                          {u"search"_s, u"--onlyvisible"_s, u"--name"_s, u"^Choose a Folder$"_s})
                     .trimmed();
        return !dialog.isEmpty();
    })) << log().constData();
    Xdotool(u"windowactivate --sync "_s + QString::fromLatin1(dialog));
    session.run(u"xdotool"_s, {u"type"_s, QFile::decodeName(folder)});
    Keys(u"Return"_s);
    EXPECT_TRUE(WaitFor([&] { return TitleLefts() == QList<int>{0, 45}; })) << log().constData();

    // Kept with the settings at quit, and back at the next start.
    DesktopSession::stop(program);
    StartProgram();
    EXPECT_TRUE(WaitFor([&] { return TitleLefts() == QList<int>{0, 45}; }));
    Xdotool(u"mousemove 65 10 click 1"_s);
    ASSERT_TRUE(WaitForLog("menu 256 shown", 1)) << log().constData();
    Keys(u"Up Right r"_s);
    EXPECT_TRUE(WaitForLog("title of " + folder + " removed", 1)) << log().constData();
    EXPECT_TRUE(WaitFor([&] { return TitleLefts() == QList<int>{0}; }));
}

} // namespace
