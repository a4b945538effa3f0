// The folder menu widget on real folders, on the offscreen platform: walking
// and scrolling a very long menu, submenus under the pointer, the filter, long
// names, and what a screen reader is told.
#include "foldermenus/buildsubmenu.h"
#include "foldermenus/foldercache.h"
#include "foldermenus/foldermenu.h"
#include "foldermenus/foldermenumodel.h"
#include "foldermenus/menutext.h"
#include "platform/folderreader.h"
#include "resources/menus.h"
#include "tests/support/desktopsession.h"
#include "tests/support/installed.h"
#include "tests/unit/foldermenu_testfolder.h"
#include "tests/widget/foldermenu_shown.h"

#include <QAccessible>
#include <QApplication>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>
#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

class FolderMenuTest : public ::testing::Test {
protected:
    void SetUp() override { generalSettings = kDefaultGeneralSettings; }
    void TearDown() override {
        TearDownDepthMenus();
        subMenuRef[0] = nullptr;
    }

    // The root menu of `path` as a click sets it up, its folder read.
    FolderMenu *Open(const QByteArray &path) {
        root_ = std::make_unique<FolderMenu>();
        SetMenuID(root_.get(), kFirstDepthMenuID);
        subMenuRef[0] = root_.get();
        const FSSpec spec{path};
        BuildSubMenu(0, &spec);
        SetUpDepthMenus(root_.get());
        EXPECT_TRUE(WaitFor([&] { return root_->model()->isComplete(); }));
        root_->openAt(QPoint(0, 0));
        EXPECT_TRUE(QTest::qWaitForWindowExposed(root_.get()));
        return root_.get();
    }

    static void Keys(QWidget *menu, const QList<Qt::Key> &keys) {
        for (const Qt::Key key : keys)
            QTest::keyClick(menu, key);
    }
    bool Visible(int item) const { return !root_->itemGeometry(item).isEmpty(); }

    Installed<platform::FileSystemFolderReader, platform::FolderReader> reader;
    std::unique_ptr<FolderMenu> root_;
};

TEST_F(FolderMenuTest, FiftyThousandItemsAreWalkedScrolledAndChosen) {
    Folder folder;
    for (int i = 0; i < 50000; ++i)
        folder.touch("f" + QByteArray::number(100000 + i));
    FolderMenu *menu = Open(folder.path());
    QSignalSpy chosen(menu, &FolderMenu::itemChosen);
    EXPECT_LE(menu->height(), menu->screen()->availableGeometry().height());

    Keys(menu, {Qt::Key_Down});
    EXPECT_EQ(menu->activeItem(), 1);
    Keys(menu, {Qt::Key_End});
    EXPECT_EQ(menu->activeItem(), 50000);
    EXPECT_TRUE(Visible(50000));
    EXPECT_FALSE(Visible(1));
    Keys(menu, {Qt::Key_PageUp});
    EXPECT_LT(menu->activeItem(), 50000);
    EXPECT_TRUE(Visible(menu->activeItem()));
    Keys(menu, {Qt::Key_Home});
    EXPECT_EQ(menu->activeItem(), 1);
    EXPECT_TRUE(Visible(1));

    // The wheel scrolls an item at a time; resting on the lower arrow scrolls on.
    for (int i = 0; i < 3; ++i) {
        QWheelEvent wheel(QPointF(20, 40), menu->mapToGlobal(QPointF(20, 40)), QPoint(),
                          QPoint(0, -120), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(menu, &wheel);
    }
    EXPECT_FALSE(Visible(1));
    EXPECT_TRUE(Visible(4));
    QTest::mouseMove(menu, QPoint(30, menu->height() - 4));
    EXPECT_TRUE(WaitFor([&] { return !Visible(8); }, 3000));

    Keys(menu, {Qt::Key_End, Qt::Key_Return});
    ASSERT_EQ(chosen.size(), 1);
    EXPECT_EQ(chosen.first().first().toInt(), 50000);
    EXPECT_EQ(FolderItemPath(menu, 50000), folder.at("f149999"));
    EXPECT_FALSE(menu->isVisible());
}

// The pointer going straight from one folder item to its sibling: the open
// submenu must show the sibling's folder, not stay with the first one. The
// keys open and close submenus as in every menu.
TEST_F(FolderMenuTest, SubmenusFollowThePointerAndTheKeys) {
    Folder folder;
    for (const char *name : {"A", "B", "C"}) {
        folder.mkdir(name);
        folder.touch(QByteArray(name) + "/in" + name);
    }
    FolderMenu *menu = Open(folder.path());
    FolderMenu *submenu = subMenuRef[1];
    for (const char *name : {"A", "B", "C", "A", "C"}) {
        const int item = QString::fromLatin1(name).at(0).unicode() - 'A' + 1;
        QTest::mouseMove(menu, menu->itemGeometry(item).center());
        EXPECT_TRUE(WaitFor(
            [&] {
                return submenu->isVisible() &&
                       Shown(submenu) == QStringList{"in"_L1 + QLatin1String(name)};
            },
            3000))
            << "hovering " << name << " shows " << qPrintable(Shown(submenu).join(u','));
    }
    Keys(QApplication::activePopupWidget(), {Qt::Key_Left});
    EXPECT_FALSE(submenu->isVisible());
    Keys(menu, {Qt::Key_Up, Qt::Key_Right});
    EXPECT_EQ(Shown(submenu), QStringList{u"inB"_s});
    EXPECT_EQ(submenu->activeItem(), 1);
}

TEST_F(FolderMenuTest, TypingNarrowsTheMenuAndEscapeWidensItAgain) {
    Folder folder;
    for (const QByteArray &name :
         {QByteArray("\xc3\x89t\xc3\xa9.txt"), QByteArray("ete"), QByteArray("Complete.doc"),
          QByteArray("Bet"), QByteArray("Other"), QByteArray("x>>-")})
        folder.touch(name);
    FolderMenu *menu = Open(folder.path());
    const QStringList all = Shown(menu);
    QTest::keyClicks(menu, u"ETE"_s);
    EXPECT_EQ(menu->filterText(), u"ETE"_s);
    // Case and accents folded; the first match stands ready for Return.
    EXPECT_EQ(Shown(menu), (QStringList{u"Complete.doc"_s, u"ete"_s, u"Été.txt"_s}));
    EXPECT_EQ(menu->itemText(menu->activeItem()), u"Complete.doc"_s);
    Keys(menu, {Qt::Key_Backspace});
    EXPECT_EQ(Shown(menu).size(), 4) << "Bet matches \"ET\"";
    QTest::keyClicks(menu, u"qq"_s);
    EXPECT_EQ(Shown(menu), QStringList{QString()}) << "only the row that says nothing matches";
    EXPECT_EQ(menu->activeItem(), 0);
    Keys(menu, {Qt::Key_Escape});
    EXPECT_TRUE(menu->filterText().isEmpty());
    EXPECT_EQ(Shown(menu), all);
    EXPECT_TRUE(menu->isVisible());
    Keys(menu, {Qt::Key_Escape});
    EXPECT_FALSE(menu->isVisible());
}

TEST_F(FolderMenuTest, LongNamesAreShortenedInTheMiddleAndShownWholeInATooltip) {
    Folder folder;
    const QByteArray longName =
        "A report on everything that happened during the long meeting of last spring.pdf";
    folder.touch(longName);
    folder.touch("short.txt");
    FolderMenu *menu = Open(folder.path());
    const QFontMetrics metrics = menu->fontMetrics();
    EXPECT_LE(menu->width(), 48 * metrics.averageCharWidth() + 80);
    EXPECT_LE(menu->width(), menu->screen()->geometry().width() / 3);

    const QString shortened = ElideKeepingExtension(QString::fromLatin1(longName), metrics, 200);
    EXPECT_TRUE(shortened.startsWith(u"A report"_s) && shortened.endsWith(u"spring.pdf"_s) &&
                shortened.contains(QChar(0x2026)))
        << qPrintable(shortened);
    EXPECT_LE(metrics.horizontalAdvance(shortened), 200);

    for (const int item : {2, 1}) { // the short name first: none shows
        QHelpEvent help(QEvent::ToolTip, menu->itemGeometry(item).center(),
                        menu->mapToGlobal(menu->itemGeometry(item).center()));
        QApplication::sendEvent(menu, &help);
        EXPECT_EQ(QToolTip::isVisible() ? QToolTip::text() : QString(),
                  item == 1 ? QString::fromLatin1(longName) : QString());
        QToolTip::hideText();
    }
}

TEST_F(FolderMenuTest, AScreenReaderIsToldEveryItemByItsWholeName) {
    Folder folder;
    folder.mkdir("Docs");
    for (const char *name : {"a.txt", "b>>-"})
        folder.touch(name);
    FolderMenu *menu = Open(folder.path());
    LoadMenuTemplate161(menu);
    QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(menu);
    ASSERT_NE(accessible, nullptr);
    EXPECT_EQ(accessible->role(), QAccessible::PopupMenu);
    QStringList names;
    QList<QAccessible::Role> roles;
    for (int i = 0; i < accessible->childCount(); ++i) {
        names.append(accessible->child(i)->text(QAccessible::Name));
        roles.append(accessible->child(i)->role());
    }
    // The folder items, then the menu's own below a line.
    EXPECT_EQ(names,
              (QStringList{u"a.txt"_s, {}, u"Docs"_s, {}, u"This Folder"_s, u"Kestrel Menu"_s}));
    EXPECT_EQ(roles, (QList<QAccessible::Role>{QAccessible::MenuItem, QAccessible::Separator,
                                               QAccessible::MenuItem, QAccessible::Separator,
                                               QAccessible::MenuItem, QAccessible::MenuItem}));
    EXPECT_TRUE(accessible->child(2)->state().hasPopup);
    Keys(menu, {Qt::Key_Down, Qt::Key_Down});
    EXPECT_EQ(accessible->focusChild(), accessible->child(2));
}

} // namespace
