// Clicking the real program's title on a private desktop (Xvfb, openbox, a
// session bus with a fake file manager that records every request): the menu
// walked with the keyboard and the mouse as a user would, with xdotool.
#include "tests/support/desktopsession.h"
#include "tests/support/tempenvironment.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPoint>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <climits>
#include <unistd.h>

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
        if (!session.failure().isEmpty())
            GTEST_SKIP() << session.failure().toStdString();
        environment = session.environment(env.processEnvironment());
        environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("kestrel.*=true"));

        // The file manager owns its name before the program looks for it.
        session.start(QStringLiteral(KESTREL_FAKE_FILEMANAGER), {requestLog}, environment);
        ASSERT_TRUE(WaitFor([&] { return QFile::exists(requestLog); }));

        program = session.start(QStringLiteral(KESTREL_PROGRAM), {}, environment);
        ASSERT_TRUE(WaitFor(
            [&] {
                return !xdotool({QStringLiteral("search"), QStringLiteral("--name"),
                                 QStringLiteral("^Kestrel Menu title$")})
                            .trimmed()
                            .isEmpty() &&
                       log().contains("running");
            },
            15000))
            << log().constData();
        // The first run's links are in place; then a tree three levels deep.
        ASSERT_TRUE(
            WaitFor([&] { return QFile::exists(QFile::decodeName(menuFolder() + "/home")); }));
        MakeFolder(menuFolder() + "/Deep/Middle/Inner/Target");
        WriteFile(menuFolder() + "/Deep/Middle/Inner/note one.txt", "note\n");
        MakeFolder(env.root() + "/Elsewhere/Real folder");
        ASSERT_EQ(::symlink((env.root() + "/Elsewhere/Real folder").constData(),
                            (menuFolder() + "/Deep/Middle/Inner/Shortcut").constData()),
                  0);
        WaitFor([] { return false; }, 200); // the folder's change is seen
    }

    void TearDown() override {
        if (program != nullptr)
            DesktopSession::stop(program);
    }

    static void MakeFolder(const QByteArray &path) {
        ASSERT_TRUE(QDir().mkpath(QFile::decodeName(path))) << path.constData();
    }

    QByteArray xdotool(const QStringList &arguments) const {
        return session.run(QStringLiteral("xdotool"), arguments);
    }
    void Xdotool(const char *arguments) const {
        xdotool(QString::fromLatin1(arguments).split(u' '));
    }

    const QByteArray &log() {
        log_ += program->readAllStandardError();
        return log_;
    }
    // Waits until `text` has shown in the log `count` times in all.
    bool WaitForLog(const char *text, qsizetype count, int timeoutMs = 5000) {
        return WaitFor([&] { return log().count(text) >= count; }, timeoutMs);
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
            const QString method = object.value(QStringLiteral("method")).toString();
            if (method.isEmpty() || method == QStringLiteral("Started"))
                continue;
            Request request{method, {}};
            for (const QJsonValue &uri : object.value(QStringLiteral("uris")).toArray())
                request.paths.append(
                    QByteArray::fromPercentEncoding(uri.toString().toLatin1().mid(7)));
            requests.append(request);
        }
        return requests;
    }
    QList<Request> WaitForRequests(qsizetype count) const {
        WaitFor([&] { return Requests().size() >= count; }, 5000);
        return Requests();
    }

    // A click on the title; returns once its menu shows.
    void ClickTitle() {
        const qsizetype shown = log().count("menu 256 shown");
        Xdotool("mousemove 20 10 click 1");
        ASSERT_TRUE(WaitForLog("menu 256 shown", shown + 1)) << log().constData();
    }
    // Keys pressed one by one; a key that opens a menu waits for it to show.
    void Keys(const QList<const char *> &keys) {
        for (const char *key : keys) {
            const qsizetype opened = log().count(" shown: ");
            xdotool({QStringLiteral("key"), QString::fromLatin1(key)});
            if (QByteArray(key) == "Right")
                ASSERT_TRUE(WaitFor([&] { return log().count(" shown: ") > opened; }))
                    << log().constData();
            else
                WaitFor([] { return false; }, 60);
        }
    }
    // Chooses the highlighted item with `choose` while `modifiers` are held;
    // returns once the menu has closed.
    void ChooseWith(const QStringList &modifiers, const char *choose = "Return") {
        const qsizetype closed = log().count("menu closed");
        for (const QString &modifier : modifiers)
            xdotool({QStringLiteral("keydown"), modifier});
        xdotool({QStringLiteral("key"), QString::fromLatin1(choose)});
        ASSERT_TRUE(WaitForLog("menu closed", closed + 1)) << log().constData();
        for (const QString &modifier : modifiers)
            xdotool({QStringLiteral("keyup"), modifier});
    }
    // To the innermost folder's menu: Deep, Middle, Inner.
    void WalkToInner() {
        ClickTitle();
        Keys({"d", "Right", "Right", "Right"});
    }

    // Types into the file dialog that has just opened and accepts it.
    void AnswerFileDialog(const char *title, const QByteArray &path) {
        const qsizetype ended = log().count("click ended") + 1;
        ASSERT_TRUE(WaitFor([&] {
            return !xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                             QStringLiteral("--name"), QString::fromLatin1(title)})
                        .trimmed()
                        .isEmpty();
        })) << title;
        WaitFor([] { return false; }, 500); // the dialog takes the keyboard
        xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("20"),
                 QFile::decodeName(path)});
        WaitFor([] { return false; }, 300);
        Xdotool("key Return");
        // The click that showed the dialog has ended.
        ASSERT_TRUE(WaitFor([&] { return log().count("click ended") >= ended; }, 15000))
            << title << " stays open: " << log().constData();
    }

    TempEnvironment env;
    DesktopSession session;
    QTemporaryDir logs;
    QString requestLog = logs.filePath(QStringLiteral("filemanager.log"));
    QProcessEnvironment environment;
    QProcess *program = nullptr;
    QByteArray log_;
};

TEST_F(ClickDesktopTest, ItemsThreeLevelsDownOpenRevealAndShowTheirPropertiesByTheKeysHeld) {
    const QByteArray inner = menuFolder() + "/Deep/Middle/Inner";
    const QByteArray note = inner + "/note one.txt";

    // No modifier: the folder chosen itself (Space) opens in the file manager.
    WalkToInner();
    Keys({"t"});
    ChooseWith({}, "space");
    // Ctrl reveals, Shift shows the properties, Ctrl wins over Shift.
    for (const QStringList &held :
         {QStringList{QStringLiteral("ctrl")}, QStringList{QStringLiteral("shift")},
          QStringList{QStringLiteral("ctrl"), QStringLiteral("shift")}}) {
        WalkToInner();
        Keys({"n"});
        ChooseWith(held);
    }
    // A link to a folder stands for the folder it points to.
    WalkToInner();
    Keys({"s"});
    ChooseWith({}, "space");

    EXPECT_EQ(
        WaitForRequests(5),
        (QList<Request>{{QStringLiteral("ShowFolders"), {inner + "/Target"}},
                        {QStringLiteral("ShowItems"), {note}},
                        {QStringLiteral("ShowItemProperties"), {note}},
                        {QStringLiteral("ShowItems"), {note}},
                        {QStringLiteral("ShowFolders"), {env.root() + "/Elsewhere/Real folder"}}}))
        << log().constData();
    EXPECT_EQ(log().count("menu closed: menu 259"), 5) << log().constData();
}

TEST_F(ClickDesktopTest, TheMouseChoosesAFolderByReleasingOnItAndNothingOutsideTheMenu) {
    // Pressed on the title, dragged onto "Deep" and let go there.
    const auto pressAndDrag = [&](const QList<QPoint> &path) {
        const qsizetype shown = log().count("menu 256 shown");
        Xdotool("mousemove 20 10 mousedown 1");
        ASSERT_TRUE(WaitForLog("menu 256 shown", shown + 1)) << log().constData();
        for (const QPoint &point : path) {
            xdotool({QStringLiteral("mousemove"), QString::number(point.x()),
                     QString::number(point.y())});
            WaitFor([] { return false; }, 50);
        }
        WaitFor([] { return false; }, 400);
        const qsizetype closed = log().count("menu closed");
        Xdotool("mouseup 1");
        ASSERT_TRUE(WaitForLog("menu closed", closed + 1)) << log().constData();
    };
    // The root menu's items, top-down from y 26: applications, Deep, ...
    pressAndDrag({{30, 20}, {40, 30}, {40, 45}, {40, 60}});
    EXPECT_EQ(WaitForRequests(1),
              (QList<Request>{{QStringLiteral("ShowFolders"), {menuFolder() + "/Deep"}}}));

    // Let go far from every menu: nothing is sent.
    pressAndDrag({{40, 40}, {300, 300}, {600, 400}});
    EXPECT_TRUE(log().contains("menu closed: menu 0 item 0 chosen")) << log().constData();
    // A click opens the menu and leaves it open; a click elsewhere closes it.
    ClickTitle();
    WaitFor([] { return false; }, 300);
    const qsizetype closed = log().count("menu closed");
    Xdotool("mousemove 600 400 click 1");
    ASSERT_TRUE(WaitForLog("menu closed", closed + 1)) << log().constData();
    WaitFor([] { return false; }, 500);
    EXPECT_EQ(Requests().size(), 1);
}

TEST_F(ClickDesktopTest, AnotherFolderAndAnAddedItemAreChosenInTheFileDialogs) {
    const QByteArray other = env.root() + "/Other folder";
    MakeFolder(other);
    WriteFile(other + "/zebra.txt", "z\n");
    const QByteArray added = env.root() + "/Elsewhere/yak.txt";
    WriteFile(added, "y\n");

    // This Folder > Choose Another Folder…
    ClickTitle();
    Keys({"t", "Right", "c"});
    ChooseWith({});
    AnswerFileDialog("Choose a Folder", other);
    // The next click shows the other folder.
    ClickTitle();
    Keys({"z"});
    ChooseWith({QStringLiteral("ctrl")});
    EXPECT_EQ(WaitForRequests(1),
              (QList<Request>{{QStringLiteral("ShowItems"), {other + "/zebra.txt"}}}))
        << log().constData();

    // This Folder > Add an Item…: a link in the new folder, shown at the next click.
    ClickTitle();
    Keys({"t", "Right", "a"});
    ChooseWith({});
    AnswerFileDialog("Choose an Item", added);
    ASSERT_TRUE(WaitFor([&] { return QFile::exists(QFile::decodeName(other + "/yak.txt")); }));
    char target[PATH_MAX] = {};
    ASSERT_GT(::readlink((other + "/yak.txt").constData(), target, sizeof target - 1), 0);
    EXPECT_EQ(QByteArray(target), added);
    ClickTitle();
    Keys({"y"});
    ChooseWith({QStringLiteral("shift")});
    EXPECT_EQ(WaitForRequests(2).value(1), (Request{QStringLiteral("ShowItemProperties"), {added}}))
        << log().constData();

    // The new folder is what the settings keep.
    EXPECT_EQ(DesktopSession::stop(program), 0) << log().right(20000).constData();
    program = nullptr;
    EXPECT_TRUE(ReadFile(env.configHome() + "/Kestrel Menu Preferences").contains(other));
}

TEST_F(ClickDesktopTest, WhileThePreferencesDialogIsOpenTheTitleOpensNoMenu) {
    // Kestrel Menu > Preferences…
    ClickTitle();
    Keys({"k", "Right", "p"});
    ChooseWith({});
    const auto dialogShows = [&] {
        return !xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                         QStringLiteral("--name"), QStringLiteral("Kestrel Menu Preferences")})
                    .trimmed()
                    .isEmpty();
    };
    ASSERT_TRUE(WaitFor(dialogShows)) << log().constData();

    const qsizetype shown = log().count("menu 256 shown");
    Xdotool("mousemove 20 10 click 1");
    WaitFor([] { return false; }, 800);
    EXPECT_EQ(log().count("menu 256 shown"), shown) << "no menu while the dialog is open";
    EXPECT_TRUE(dialogShows());

    // Closed, the title works again.
    const QByteArray dialog =
        xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                 QStringLiteral("--name"), QStringLiteral("Kestrel Menu Preferences")})
            .trimmed()
            .split('\n')
            .first();
    xdotool(
        {QStringLiteral("windowactivate"), QStringLiteral("--sync"), QString::fromLatin1(dialog)});
    Xdotool("key Escape");
    ASSERT_TRUE(WaitFor([&] { return !dialogShows(); }));
    ClickTitle();
    Keys({"Escape"});
    EXPECT_TRUE(Requests().isEmpty());
}

// Files dragged from another program onto the title: the next click shows
// the links made for them, though the menu had been built before.
TEST_F(ClickDesktopTest, AfterADropTheNextClickShowsTheNewLinks) {
    ClickTitle();
    Keys({"Escape"});
    QStringList uris;
    for (const char *name : {"quince.txt", "xylophone one.txt", "walnut.txt"}) {
        const QByteArray path = env.root() + "/dragged/" + name;
        WriteFile(path, "dragged\n");
        uris.append(QString::fromLatin1("file://" + path.toPercentEncoding("/")));
    }
    QProcess *source = session.start(QStringLiteral(KESTREL_DROP_SOURCE),
                                     QStringList{QStringLiteral("files")} + uris, environment);
    ASSERT_TRUE(WaitFor([&] { return source->canReadLine(); }));
    const QString sourceWindow = QString::fromLatin1(source->readLine().trimmed());
    ASSERT_TRUE(WaitFor([&] {
        return session.run(QStringLiteral("xwininfo"), {QStringLiteral("-id"), sourceWindow})
            .contains("IsViewable");
    }));

    // Pressed on the source, moved in steps to the title, let go there.
    xdotool({QStringLiteral("mousemove"), QStringLiteral("--sync"), QStringLiteral("--window"),
             sourceWindow, QStringLiteral("100"), QStringLiteral("60")});
    WaitFor([] { return false; }, 200);
    Xdotool("mousedown 1");
    const QStringList location = QString::fromLatin1(xdotool({QStringLiteral("getmouselocation")}))
                                     .split(u' ', Qt::SkipEmptyParts);
    const int startX = location.value(0).section(u':', 1).toInt();
    const int startY = location.value(1).section(u':', 1).toInt();
    for (int step = 1; step <= 20; ++step) {
        xdotool({QStringLiteral("mousemove"), QString::number(startX + (20 - startX) * step / 20),
                 QString::number(startY + (10 - startY) * step / 20)});
        WaitFor([] { return false; }, 40);
    }
    for (int x : {21, 22, 20}) {
        xdotool({QStringLiteral("mousemove"), QString::number(x), QStringLiteral("10")});
        WaitFor([] { return false; }, 60);
    }
    WaitFor([] { return false; }, 400);
    Xdotool("mouseup 1");
    ASSERT_TRUE(WaitFor([&] { return source->canReadLine(); }));
    EXPECT_EQ(source->readLine().trimmed(), "dropped link") << log().constData();
    ASSERT_TRUE(WaitFor([&] {
        return QFile::exists(QFile::decodeName(menuFolder() + "/walnut.txt"));
    })) << log().constData();

    ClickTitle();
    Keys({"x"});
    ChooseWith({QStringLiteral("ctrl")});
    ClickTitle();
    Keys({"q"});
    ChooseWith({QStringLiteral("shift")});
    EXPECT_EQ(WaitForRequests(2),
              (QList<Request>{
                  {QStringLiteral("ShowItems"), {env.root() + "/dragged/xylophone one.txt"}},
                  {QStringLiteral("ShowItemProperties"), {env.root() + "/dragged/quince.txt"}}}))
        << log().constData();
}

} // namespace
