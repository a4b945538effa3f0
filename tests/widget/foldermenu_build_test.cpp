// Building folder menus from real folders: items, placeholder, icons, submenus.
#include "foldermenus/buildsubmenu.h"
#include "foldermenus/foldercache.h"
#include "resources/menus.h"
#include "tests/unit/foldermenu_testfolder.h"

#include <QAction>
#include <QMenu>
#include <gtest/gtest.h>

#include <memory>

namespace {

class BuildSubMenuTest : public ::testing::Test {
protected:
    void SetUp() override {
        savedSettings_ = generalSettings;
        generalSettings = kDefaultGeneralSettings;
        for (int depth = 0; depth < kDepthMenuCount; ++depth) {
            subMenuRef[depth] = nullptr;
            subMenuItems[depth] = 0;
        }
    }
    void TearDown() override { generalSettings = savedSettings_; }

    // Fills a fresh menu of `depth` from `folder`.
    QMenu *build(std::int32_t depth, const QByteArray &folder) {
        if (menu_ == nullptr) {
            menu_.reset(new QMenu);
            subMenuRef[depth] = menu_.get();
        }
        const FSSpec spec{folder};
        BuildSubMenu(depth, &spec);
        return menu_.get();
    }

    static QStringList Texts(const QMenu *menu) {
        QStringList texts;
        for (const QAction *item : menu->actions())
            texts.append(item->text());
        return texts;
    }

    GeneralSettings savedSettings_{};
    std::unique_ptr<QMenu> menu_;
};

TEST_F(BuildSubMenuTest, EmptyHiddenAndUnreadableFoldersShowThePlaceholder) {
    Folder folder;
    folder.mkdir("empty");
    folder.mkdir("allhidden");
    folder.touch("allhidden/.hidden", "x\n");
    folder.touch("allhidden/x");
    for (const QByteArray &path :
         {folder.at("empty"), folder.at("allhidden"), folder.at("missing"), QByteArray()}) {
        std::unique_ptr<QMenu> root(NewMenuFromTemplate161());
        subMenuRef[0] = root.get();
        subMenuItems[0] = 0;
        const FSSpec spec{path};
        BuildSubMenu(0, &spec);
        ASSERT_EQ(subMenuItems[0], 1u) << path.constData();
        const QAction *placeholder = root->actions().first();
        EXPECT_EQ(placeholder->text(), EmptyFolderText());
        EXPECT_TRUE(FolderItemPath(placeholder).isEmpty());
        EXPECT_EQ(placeholder->menu(), nullptr);
        EXPECT_TRUE(placeholder->icon().isNull());
        EXPECT_EQ(root->actions().size(), 4); // the menu's own items stay below
    }
}

TEST_F(BuildSubMenuTest, RebuildReplacesOnlyTheFolderItems) {
    Folder first;
    Folder second;
    for (const char *name : {"c", "a", "b"})
        first.touch(name);
    second.touch("only");
    std::unique_ptr<QMenu> root(NewMenuFromTemplate161());
    const QList<QAction *> own = root->actions();
    subMenuRef[0] = root.get();
    const FSSpec firstSpec{first.path()};
    BuildSubMenu(0, &firstSpec);
    EXPECT_EQ(subMenuItems[0], 3u);
    EXPECT_EQ(root->actions().mid(3), own);
    EXPECT_EQ(Texts(root.get()).mid(0, 3),
              (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}));

    const FSSpec secondSpec{second.path()};
    BuildSubMenu(0, &secondSpec);
    EXPECT_EQ(subMenuItems[0], 1u);
    ASSERT_EQ(root->actions().size(), 4);
    EXPECT_EQ(root->actions().first()->text(), QStringLiteral("only"));
    EXPECT_EQ(root->actions().mid(1), own);
}

TEST_F(BuildSubMenuTest, ItemsShowNamesAsWrittenAndCarryTheirPaths) {
    Folder folder;
    for (const QByteArray &name : {QByteArray("Tom & Jerry"), QByteArray("tab\there"),
                                   QByteArray("x>>-"), QByteArray("-"), QByteArray(">>")})
        folder.touch(name);
    QMenu *menu = build(1, folder.path());
    ASSERT_EQ(subMenuItems[1], 5u);
    const QList<QAction *> items = menu->actions();
    EXPECT_EQ(Texts(menu),
              (QStringList{QStringLiteral("-"), QString(), QStringLiteral("tab\uFFFDhere"),
                           QStringLiteral("Tom && Jerry"), QStringLiteral("-")}));
    EXPECT_FALSE(items[0]->isSeparator());
    EXPECT_TRUE(items[4]->isSeparator());
    EXPECT_EQ(FolderItemPath(items[3]), folder.at("Tom & Jerry"));
    EXPECT_EQ(FolderItemPath(items[4]), folder.at("x>>-")); // separators keep their path too
}

TEST_F(BuildSubMenuTest, IconsFollowTheSettings) {
    Folder folder;
    folder.mkdir("five");
    for (const char *name : {"five/a.txt", "five/b.pdf", "five/c", "five/d.png", "five/.e"})
        folder.touch(name);
    folder.mkdir("six");
    for (const char *name : {"six/a.txt", "six/b", "six/c", "six/d", "six/.e", "six/.f"})
        folder.touch(name);
    const auto iconCount = [](const QMenu *menu) {
        int count = 0;
        for (const QAction *item : menu->actions())
            count += item->icon().isNull() ? 0 : 1;
        return count;
    };

    generalSettings.subMenuIconLimit = 5;
    // Hidden entries count towards the limit: five entries show icons, six do not.
    EXPECT_EQ(iconCount(build(1, folder.at("five"))), 4);
    EXPECT_EQ(iconCount(build(1, folder.at("six"))), 0);
    generalSettings.subMenuIconLimit = -1; // read as a huge number: never a limit
    EXPECT_EQ(iconCount(build(1, folder.at("six"))), 4);
    generalSettings.subMenuIcons = 0;
    EXPECT_EQ(iconCount(build(1, folder.at("five"))), 0);

    // The root menu listens to its own setting, of which only the low byte counts.
    menu_.reset();
    generalSettings.subMenuIcons = 0;
    generalSettings.mainMenuIcons = 1;
    EXPECT_EQ(iconCount(build(0, folder.at("six"))), 4);
    generalSettings.mainMenuIcons = 0x100;
    EXPECT_EQ(iconCount(build(0, folder.at("six"))), 0);
}

TEST_F(BuildSubMenuTest, RealFoldersLeadToTheNextDepth) {
    Folder folder;
    folder.mkdir("Sub");
    folder.mkdir("App.AppDir");
    folder.touch("App.AppDir/AppRun");
    chmod(folder.at("App.AppDir/AppRun").constData(), 0755);
    ASSERT_EQ(symlink(folder.at("Sub").constData(), folder.at("Link").constData()), 0);
    ASSERT_EQ(symlink("nowhere", folder.at("Broken").constData()), 0);
    folder.touch("file");
    QMenu next;
    subMenuRef[2] = &next;
    QMenu *menu = build(1, folder.path());
    QHash<QString, const QAction *> byText;
    for (const QAction *item : menu->actions())
        byText.insert(item->text(), item);
    EXPECT_EQ(byText.value(QStringLiteral("Sub"))->menu(), &next);
    EXPECT_EQ(byText.value(QStringLiteral("Link"))->menu(), &next);
    for (const char *plain : {"App.AppDir", "Broken", "file"})
        EXPECT_EQ(byText.value(QString::fromLatin1(plain))->menu(), nullptr) << plain;
    EXPECT_EQ(HierarchicalItems(menu).size(), 2);

    // The deepest menu has no next depth: its folders are plain items.
    menu_.reset();
    subMenuRef[9] = nullptr;
    QMenu *deepest = build(9, folder.path());
    for (const QAction *item : deepest->actions())
        EXPECT_EQ(item->menu(), nullptr) << qPrintable(item->text());
    EXPECT_TRUE(HierarchicalItems(deepest).isEmpty());
}

TEST_F(BuildSubMenuTest, SubmenusShowTheirFolderAsItIsWhenTheyOpen) {
    Folder folder;
    folder.mkdir("Sub");
    folder.touch("Sub/old");
    folder.mkdir("Gone");
    folder.touch("Gone/inside");
    std::unique_ptr<QMenu> root(NewMenuFromTemplate161());
    subMenuRef[0] = root.get();
    const FSSpec spec{folder.path()};
    BuildSubMenu(0, &spec);
    SetUpDepthMenus(root.get());
    QAction *sub = nullptr;
    QAction *gone = nullptr;
    for (QAction *item : root->actions()) {
        if (item->text() == QLatin1String("Sub"))
            sub = item;
        if (item->text() == QLatin1String("Gone"))
            gone = item;
    }
    ASSERT_TRUE(sub != nullptr && gone != nullptr);
    ASSERT_EQ(sub->menu(), subMenuRef[1]);

    root->setActiveAction(sub);
    CarbonEventSubMenu(subMenuRef[1]);
    EXPECT_EQ(Texts(subMenuRef[1]), QStringList{QStringLiteral("old")});
    folder.touch("Sub/new"); // a change inside a subfolder shows at its next opening
    CarbonEventSubMenu(subMenuRef[1]);
    EXPECT_EQ(Texts(subMenuRef[1]), (QStringList{QStringLiteral("new"), QStringLiteral("old")}));

    // A folder that vanished between two openings shows as empty.
    ASSERT_EQ(unlink(folder.at("Gone/inside").constData()), 0);
    ASSERT_EQ(rmdir(folder.at("Gone").constData()), 0);
    root->setActiveAction(gone);
    CarbonEventSubMenu(subMenuRef[1]);
    EXPECT_EQ(Texts(subMenuRef[1]), QStringList{EmptyFolderText()});
    EXPECT_EQ(subMenuItems[1], 1u);
    TearDownDepthMenus();
}

} // namespace
