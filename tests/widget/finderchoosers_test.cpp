// The folder and item choosers, driven on Qt's own file dialog.
#include "finder/choosers.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakefrontwindow.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"
#include "tests/widget/answerfiledialog.h"
#include "titles/userinteraction.h"

#include <gtest/gtest.h>

#include <QTimer>

#include <unistd.h>

namespace {

// A link chosen as a folder stands for its folder; chosen as an item it stays
// a link. A cancel changes nothing and reports nothing. Either way this
// program came forward for the dialog, and the window in front before it is
// back after.
TEST(ChoosersTest, ChoosersGiveWhatWasChosenOrNothing) {
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    TempEnvironment environment;
    const QByteArray root = environment.root(), target = root + "/Target folder",
                     file = root + "/letter.txt", link = root + "/Link to target";
    WriteFile(target + "/inside", "");
    WriteFile(file, "text\n");
    ASSERT_EQ(::symlink(target.constData(), link.constData()), 0);
    Installed<platform::FakeFrontWindow, platform::FrontWindow> front;
    Installed<platform::FakeAlerts, platform::Alerts> alerts;
    front.front = {500, 7};

    struct Case {
        bool folder;
        QByteArray choice, result; // no choice: cancelled
    };
    const Case cases[] = {{true, target, target},   {true, link, target},    {true, {}, root},
                          {false, file, file},      {false, target, target}, {false, link, link},
                          {false, {}, "/unchanged"}};
    for (const Case &c : cases) {
        // The dialog reads folders in the background: the answer is tried
        // until it takes, and a dialog that will not close is cancelled.
        int attempts = 0, levelWhileOpen = -1;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            AnswerFrontFileDialog([&](QFileDialog *) {
                levelWhileOpen = userInteractionHideLevel;
                return ++attempts > 100 ? QByteArray() : c.choice;
            });
        });
        timer.start(50);
        FSSpec spec{c.folder ? root : QByteArray("/unchanged")};
        EXPECT_EQ(c.folder ? SelectNewFolder(&spec) : SelectAnObject(&spec), !c.choice.isEmpty());
        EXPECT_EQ(spec.path, c.result) << c.choice.constData();
        EXPECT_EQ(levelWhileOpen, 1);
        EXPECT_EQ(userInteractionHideLevel, 0);
        EXPECT_EQ(front.broughtToFront, (QList<ProcessSerialNumber>{front.self, {500, 7}}));
        front.broughtToFront.clear();
    }
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

} // namespace
