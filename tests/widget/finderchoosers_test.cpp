// The folder and item choosers, driven on Qt's own file dialog.
#include "finder/choosers.h"
#include "platform/doubles/fakealerts.h"
#include "platform/doubles/fakefrontwindow.h"
#include "platform/service.h"
#include "tests/support/installed.h"
#include "tests/support/tempenvironment.h"
#include "titles/userinteraction.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

#include <functional>
#include <unistd.h>

namespace {

class ChoosersTest : public ::testing::Test {
protected:
    void SetUp() override {
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        root = environment.root() + "/choose";
        target = root + "/Target folder";
        file = root + "/letter.txt";
        link = root + "/Link to target";
        ASSERT_TRUE(QDir().mkpath(QFile::decodeName(target)));
        WriteFile(file, "text\n");
        ASSERT_EQ(::symlink(target.constData(), link.constData()), 0);
        front.front = {500, 7};
    }

    // Answers the next file dialog with `act`, noting what it saw. The dialog
    // reads folders in the background, so `act` is repeated until the dialog
    // closes; one that will not close is cancelled after five seconds.
    void Answer(std::function<void(QFileDialog *)> act) {
        timer = std::make_unique<QTimer>();
        timer->setInterval(50);
        QObject::connect(timer.get(), &QTimer::timeout, [this, act] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            if (dialog == nullptr)
                return;
            if (!answered) {
                answered = true;
                levelWhileOpen = userInteractionHideLevel;
                fileModeWhileOpen = dialog->fileMode();
            }
            if (++attempts > 100)
                dialog->reject();
            else
                act(dialog);
        });
        attempts = 0;
        answered = false;
        timer->start();
    }
    static std::function<void(QFileDialog *)> Choose(const QByteArray &path) {
        return [path](QFileDialog *dialog) {
            // Typed into the name box, then the dialog's own accepting button,
            // as the user would do it.
            auto *name = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
            ASSERT_NE(name, nullptr);
            name->setText(QFile::decodeName(path));
            auto *buttons = dialog->findChild<QDialogButtonBox *>();
            ASSERT_NE(buttons, nullptr);
            for (QAbstractButton *button : buttons->buttons()) {
                if (buttons->buttonRole(button) == QDialogButtonBox::AcceptRole)
                    button->click();
            }
        };
    }
    static void Cancel(QFileDialog *dialog) { dialog->reject(); }

    // The interaction was bracketed: this program came forward and the window
    // in front before it is back.
    void ExpectBracketed() {
        EXPECT_TRUE(answered);
        EXPECT_EQ(levelWhileOpen, 1);
        EXPECT_EQ(userInteractionHideLevel, 0);
        EXPECT_EQ(front.broughtToFront, (QList<ProcessSerialNumber>{front.self, {500, 7}}));
        EXPECT_TRUE(alerts.alerts.isEmpty());
    }

    TempEnvironment environment;
    QByteArray root, target, file, link;
    Installed<platform::FakeFrontWindow, platform::FrontWindow> front;
    Installed<platform::FakeAlerts, platform::Alerts> alerts;
    std::unique_ptr<QTimer> timer;
    int attempts = 0;
    bool answered = false;
    int levelWhileOpen = -1;
    QFileDialog::FileMode fileModeWhileOpen = QFileDialog::ExistingFiles;
};

TEST_F(ChoosersTest, AChosenFolderIsStored) {
    FSSpec folder{root};
    Answer(Choose(target));
    EXPECT_TRUE(SelectNewFolder(&folder));
    EXPECT_EQ(folder.path, target) << folder.path.constData();
    EXPECT_EQ(fileModeWhileOpen, QFileDialog::Directory);
    ExpectBracketed();
}

TEST_F(ChoosersTest, ALinkToAFolderGivesTheFolderItself) {
    FSSpec folder{root};
    Answer(Choose(link));
    EXPECT_TRUE(SelectNewFolder(&folder));
    EXPECT_EQ(folder.path, target) << folder.path.constData();
    ExpectBracketed();
}

TEST_F(ChoosersTest, CancellingLeavesTheFolderAlone) {
    FSSpec folder{root};
    Answer(Cancel);
    EXPECT_FALSE(SelectNewFolder(&folder));
    EXPECT_EQ(folder.path, root);
    ExpectBracketed();
}

TEST_F(ChoosersTest, AnyItemCanBeChosenAndLinksStayLinks) {
    for (const QByteArray &item : {file, target, link}) {
        front.broughtToFront.clear();
        FSSpec object{"/unchanged"};
        Answer(Choose(item));
        EXPECT_TRUE(SelectAnObject(&object)) << item.constData();
        EXPECT_EQ(object.path, item);
        EXPECT_EQ(fileModeWhileOpen, QFileDialog::ExistingFile);
        ExpectBracketed();
    }
}

TEST_F(ChoosersTest, CancellingTheItemChooserChangesNothing) {
    FSSpec object{"/unchanged"};
    Answer(Cancel);
    EXPECT_FALSE(SelectAnObject(&object));
    EXPECT_EQ(object.path, "/unchanged");
    ExpectBracketed();
}

} // namespace
