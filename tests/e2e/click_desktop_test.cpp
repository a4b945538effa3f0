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
        if (!session.failure().isEmpty())
            GTEST_SKIP() << session.failure().toStdString();
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

        program = session.start(QStringLiteral(KESTREL_PROGRAM), {}, environment);
        ASSERT_TRUE(WaitFor([&] { return log().contains("running"); }, 15000)) << log().constData();
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
    bool WaitForLog(const char *text, qsizetype count) {
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

    TempEnvironment env;
    DesktopSession session;
    QTemporaryDir logs;
    QString requestLog = logs.filePath(u"filemanager.log"_s);
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

} // namespace
