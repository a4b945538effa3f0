// The drop handlers of a title fed with drags made by hand: which drags a
// title takes, its highlight, the links a drop makes and where a drop stops;
// and how a drag's data becomes items, odd names included.
#include "tests/unit/foldermenu_testfolder.h"
#include "tests/widget/titles_fixture.h"

#include "foldermenus/foldercache.h"
#include "foldermenus/foldermenu.h"
#include "foldermenus/foldermenumodel.h"
#include "tests/support/desktopsession.h"
#include "titles/titledrops.h"
#include "titles/titlewindow.h"

#include <QMimeData>

#include <climits>

namespace {

DragItem FileItem(const QByteArray &path) {
    return {{{kDragFlavorTypeHFS, path},
             {kDragFlavorTypeURL, "file://" + path.toPercentEncoding("/")}}};
}

DragItem TextItem() {
    return {{{kDragFlavorTypeMIME, "text/plain"}, {kDragFlavorTypeMIME, "text/html"}}};
}

Drag Files(const QList<QByteArray> &paths) {
    Drag drag;
    for (const QByteArray &path : paths)
        drag.items.push_back(FileItem(path));
    return drag;
}

QByteArray LinkTarget(const QByteArray &link) {
    char target[PATH_MAX];
    const ssize_t length = ::readlink(link.constData(), target, sizeof target);
    return length < 0 ? QByteArray() : QByteArray(target, length);
}

class TitleDropHandlersTest : public TitlesTest {
protected:
    void SetUp() override {
        TitlesTest::SetUp();
        title = AddTitle(kSideLeft);
        title->menuSpec->folder = FSSpec{menuFolder.path()};
        items.mkdir("one");
        items.mkdir("two");
        items.mkdir("three");
        for (const char *folder : {"one/", "two/", "three/"})
            items.touch(QByteArray(folder) + "report.pdf");
    }
    void TearDown() override {
        DestroyFolderCachedMenu(nullptr);
        TitlesTest::TearDown();
    }

    QList<QByteArray> Reports() const {
        return {items.at("one/report.pdf"), items.at("two/report.pdf"),
                items.at("three/report.pdf")};
    }
    FolderMenu *BuildCachedMenu() {
        InitializeFolderCachedMenu(title);
        EXPECT_TRUE(WaitFor([&] { return title->cachedMenu->model()->isComplete(); }));
        return title->cachedMenu;
    }
    TitleWindow *window() const { return static_cast<TitleWindow *>(title->window); }
    QRegion WholeWindow() const { return QRegion(QRect(QPoint(0, 0), title->window->size())); }

    Folder menuFolder;
    Folder items;
    ReadyMenu *title = nullptr;
};

TEST_F(TitleDropHandlersTest, AFolderTitleTakesOnlyDragsWhoseEveryItemIsALocalFile) {
    EXPECT_TRUE(CheckDragAcceptable(title, Files({items.at("one")})));
    EXPECT_TRUE(CheckDragAcceptable(title, Files(Reports())));
    EXPECT_TRUE(CheckDragAcceptable(title, Drag())) << "no items at all is acceptable";

    // The file flavour need not come first.
    DragItem reordered = FileItem(items.at("one"));
    std::swap(reordered.flavors[0], reordered.flavors[1]);
    EXPECT_TRUE(CheckDragAcceptable(title, Drag{{reordered}}));

    // One item that is not a local file refuses the whole drag.
    Drag mixed = Files(Reports());
    mixed.items[1] = TextItem();
    EXPECT_FALSE(CheckDragAcceptable(title, mixed));
    EXPECT_FALSE(CheckDragAcceptable(title, Drag{{TextItem()}}));
    const DragItem remote{{{kDragFlavorTypeURL, "https://example.org/a"}}};
    EXPECT_FALSE(CheckDragAcceptable(title, Drag{{remote}}));
    EXPECT_FALSE(CheckDragAcceptable(title, Drag{{DragItem()}})) << "an item with no flavours";

    // A title that shows no folder takes nothing, not even an empty drag.
    title->menuSpec->contents = kContentsProcesses;
    EXPECT_FALSE(CheckDragAcceptable(title, Files({items.at("one")})));
    EXPECT_FALSE(CheckDragAcceptable(title, Drag()));
    EXPECT_EQ(MenuDragReceiveHandler(title->window, title, Files({items.at("one")})),
              dragNotAcceptedErr);
    EXPECT_TRUE(menuFolder.enumerationOrder().isEmpty());
}

TEST_F(TitleDropHandlersTest, TheWholeTitleHighlightsOnlyWhileAnAcceptableDragIsInside) {
    const Drag files = Files({items.at("one")});
    for (auto message : {kDragTrackingEnterHandler, kDragTrackingEnterWindow}) {
        EXPECT_EQ(MenuDragTrackHandler(message, title->window, title, files), noErr);
        EXPECT_TRUE(window()->dragHighlight().isEmpty()) << message;
    }
    EXPECT_EQ(MenuDragTrackHandler(kDragTrackingInWindow, title->window, title, files), noErr);
    EXPECT_EQ(window()->dragHighlight(), WholeWindow());
    // Every message inside shows it again; it stays as it is.
    MenuDragTrackHandler(kDragTrackingInWindow, title->window, title, files);
    EXPECT_EQ(window()->dragHighlight(), WholeWindow());
    for (auto message : {kDragTrackingLeaveWindow, kDragTrackingLeaveHandler}) {
        MenuDragTrackHandler(kDragTrackingInWindow, title->window, title, files);
        EXPECT_EQ(MenuDragTrackHandler(message, title->window, title, files), noErr);
        EXPECT_TRUE(window()->dragHighlight().isEmpty()) << message;
    }

    // A drag that is not acceptable takes the highlight away, and never shows it.
    MenuDragTrackHandler(kDragTrackingInWindow, title->window, title, files);
    EXPECT_EQ(MenuDragTrackHandler(kDragTrackingInWindow, title->window, title, Drag{{TextItem()}}),
              noErr);
    EXPECT_TRUE(window()->dragHighlight().isEmpty());

    title->menuSpec->contents = kContentsProcesses;
    MenuDragTrackHandler(kDragTrackingInWindow, title->window, title, files);
    EXPECT_TRUE(window()->dragHighlight().isEmpty()) << "a title without a folder";
}

TEST_F(TitleDropHandlersTest, EachItemBecomesALinkInOrderAndTheNextMenuListsThem) {
    ASSERT_NE(BuildCachedMenu(), nullptr);
    EXPECT_EQ(MenuDragReceiveHandler(title->window, title, Files(Reports())), noErr);

    // Three items of one name: the numbering shows the order they were linked in.
    EXPECT_EQ(LinkTarget(menuFolder.at("report.pdf")), items.at("one/report.pdf"));
    EXPECT_EQ(LinkTarget(menuFolder.at("report (2).pdf")), items.at("two/report.pdf"));
    EXPECT_EQ(LinkTarget(menuFolder.at("report (3).pdf")), items.at("three/report.pdf"));
    EXPECT_EQ(menuFolder.enumerationOrder().size(), 3);

    EXPECT_EQ(title->cachedMenu, nullptr) << "the cached menu must be dropped";
    QStringList texts;
    const FolderMenu *menu = BuildCachedMenu();
    for (int item = 1; item <= menu->itemCount(); ++item)
        texts.append(menu->itemText(item));
    EXPECT_TRUE(texts.contains(QStringLiteral("report.pdf"))) << texts.join(u'|').toStdString();
    EXPECT_TRUE(texts.contains(QStringLiteral("report (3).pdf"))) << texts.join(u'|').toStdString();
}

TEST_F(TitleDropHandlersTest, ARefusedDragOrAnEmptyOneMakesNothingAndKeepsTheMenu) {
    FolderMenu *cached = BuildCachedMenu();
    Drag mixed = Files(Reports());
    mixed.items[2] = TextItem();
    EXPECT_EQ(MenuDragReceiveHandler(title->window, title, mixed), dragNotAcceptedErr);
    EXPECT_EQ(MenuDragReceiveHandler(title->window, title, Drag{{TextItem()}}), dragNotAcceptedErr);
    EXPECT_TRUE(menuFolder.enumerationOrder().isEmpty()) << "not even the first item";
    EXPECT_EQ(title->cachedMenu, cached);

    EXPECT_EQ(MenuDragReceiveHandler(title->window, title, Drag()), noErr);
    EXPECT_EQ(AcceptDrag(title, Drag()), noErr);
    EXPECT_TRUE(menuFolder.enumerationOrder().isEmpty());
    EXPECT_EQ(title->cachedMenu, cached);
}

TEST_F(TitleDropHandlersTest, AFailureStopsTheDropWithItsStatusAndKeepsTheEarlierLinks) {
    // A link to a path longer than any the system takes cannot be made.
    QByteArray tooLong = "/";
    while (tooLong.size() <= PATH_MAX)
        tooLong += "deep/";
    tooLong += "report.pdf";
    Drag drag = Files(Reports());
    drag.items[1] = FileItem(tooLong);

    BuildCachedMenu();
    EXPECT_EQ(MenuDragReceiveHandler(title->window, title, drag), bdNamErr);
    EXPECT_EQ(menuFolder.enumerationOrder(), QList<QByteArray>{"report.pdf"});
    EXPECT_EQ(LinkTarget(menuFolder.at("report.pdf")), items.at("one/report.pdf"));
    EXPECT_EQ(title->cachedMenu, nullptr) << "dropped after the first link already";

    // A folder that has gone: the first item's status, nothing made.
    title->menuSpec->folder = FSSpec{menuFolder.at("gone")};
    EXPECT_EQ(AcceptDrag(title, Files(Reports())), fnfErr);

    // An item that reached AcceptDrag without a file flavour.
    title->menuSpec->folder = FSSpec{menuFolder.path()};
    Drag unchecked = Files({items.at("two/report.pdf")});
    unchecked.items.push_back(TextItem());
    unchecked.items.push_back(FileItem(items.at("three/report.pdf")));
    EXPECT_EQ(AcceptDrag(title, unchecked), badDragFlavorErr);
    EXPECT_EQ(menuFolder.enumerationOrder().size(), 2);
    EXPECT_FALSE(QFile::exists(QFile::decodeName(menuFolder.at("report (3).pdf"))));
}

TEST_F(TitleDropHandlersTest, OddNamesAreLinkedByteForByte) {
    const QList<QByteArray> names{"a name with spaces", "hash#and%25percent", "two\nlines",
                                  "not utf-8 \xff\xfe", QByteArray(255, 'n')};
    QList<QByteArray> paths;
    QByteArray list;
    for (const QByteArray &name : names) {
        items.touch(name);
        paths.append(items.at(name));
        list += "file://" + items.at(name).toPercentEncoding("/") + "\r\n";
    }
    QMimeData data;
    data.setData(QStringLiteral("text/uri-list"), list);
    const Drag drag = DragFromMimeData(&data);
    ASSERT_EQ(drag.items.size(), std::size_t(names.size()));
    EXPECT_EQ(MenuDragReceiveHandler(title->window, title, drag), noErr);
    for (qsizetype i = 0; i < names.size(); ++i)
        EXPECT_EQ(LinkTarget(menuFolder.at(names[i])), paths[i]) << names[i].toHex().constData();
}

TEST(TitleDragData, AddressesOfThisMachineBecomePathsAndEverythingElseStaysAnAddress) {
    const QByteArray host = QSysInfo::machineHostName().toUtf8();
    EXPECT_EQ(LocalPathFromUri("file:///home/ann/a%20b"), "/home/ann/a b");
    EXPECT_EQ(LocalPathFromUri("file://localhost/tmp/x"), "/tmp/x");
    EXPECT_EQ(LocalPathFromUri("FILE:///tmp/x"), "/tmp/x");
    EXPECT_EQ(LocalPathFromUri("file:/tmp/x"), "/tmp/x");
    EXPECT_EQ(LocalPathFromUri("file://" + host + "/tmp/x"), "/tmp/x");
    EXPECT_EQ(LocalPathFromUri("file:///tmp/%23%3F%25%0A%FF"), "/tmp/#?%\n\xff");
    EXPECT_EQ(LocalPathFromUri("file:///tmp/x?query#fragment"), "/tmp/x");
    EXPECT_EQ(LocalPathFromUri("file:///"), "/");

    EXPECT_EQ(LocalPathFromUri("file://elsewhere.example/tmp/x"), QByteArray());
    EXPECT_EQ(LocalPathFromUri("file://localhost"), QByteArray());
    EXPECT_EQ(LocalPathFromUri("file:relative/x"), QByteArray());
    EXPECT_EQ(LocalPathFromUri("file:///tmp/nul%00byte"), QByteArray());
    EXPECT_EQ(LocalPathFromUri("https://example.org/tmp/x"), QByteArray());
    EXPECT_EQ(LocalPathFromUri("smb://server/share/x"), QByteArray());
}

TEST(TitleDragData, AUriListGivesOneItemPerAddressAndOtherDataOneItem) {
    QMimeData list;
    list.setData(QStringLiteral("text/uri-list"),
                 "# a comment\r\nfile:///tmp/a\r\nhttps://example.org/b\r\n\r\nfile:///tmp/c\n");
    list.setText(QStringLiteral("the same items as text"));
    const Drag drag = DragFromMimeData(&list);
    ASSERT_EQ(drag.items.size(), 3u);
    EXPECT_EQ(drag.items[0].flavors[0].type, kDragFlavorTypeHFS);
    EXPECT_EQ(drag.items[0].flavors[0].data, "/tmp/a");
    ASSERT_EQ(drag.items[1].flavors.size(), 1u);
    EXPECT_EQ(drag.items[1].flavors[0].type, kDragFlavorTypeURL);
    EXPECT_EQ(drag.items[2].flavors[0].data, "/tmp/c");

    QMimeData text;
    text.setText(QStringLiteral("file:///tmp/a"));
    const Drag textDrag = DragFromMimeData(&text);
    ASSERT_EQ(textDrag.items.size(), 1u);
    for (const DragFlavor &flavor : textDrag.items[0].flavors)
        EXPECT_NE(flavor.type, kDragFlavorTypeHFS) << "text that looks like an address";

    QMimeData nothing;
    EXPECT_TRUE(DragFromMimeData(&nothing).items.empty());
    QMimeData emptyList;
    emptyList.setData(QStringLiteral("text/uri-list"), "\r\n");
    EXPECT_TRUE(DragFromMimeData(&emptyList).items.empty());
}

TEST(TitleDragData, ADropLinksOrCopiesButNeverMoves) {
    EXPECT_EQ(ChooseDropAction(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction), Qt::LinkAction);
    EXPECT_EQ(ChooseDropAction(Qt::CopyAction | Qt::MoveAction), Qt::CopyAction);
    EXPECT_EQ(ChooseDropAction(Qt::MoveAction), Qt::IgnoreAction);
    EXPECT_EQ(ChooseDropAction(Qt::IgnoreAction), Qt::IgnoreAction);
}

} // namespace
