// Drops on a title, through the window's own drag events with real drag data:
// which drags it takes and what it answers the source, its highlight, the
// links a drop makes (odd names byte for byte) and where a failing drop stops;
// and how a drag's addresses become items.
#include "tests/unit/foldermenu_testfolder.h"
#include "tests/widget/titles_fixture.h"

#include "foldermenus/foldercache.h"
#include "titles/titledrops.h"
#include "titles/titlewindow.h"

#include <QApplication>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

#include <climits>
#include <memory>

namespace {

constexpr Qt::DropActions kFileManagerActions = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;

QByteArray LinkTarget(const QByteArray &link) {
    char target[PATH_MAX];
    const ssize_t length = ::readlink(link.constData(), target, sizeof target);
    return length < 0 ? QByteArray() : QByteArray(target, length);
}

std::unique_ptr<QMimeData> UriList(const QList<QByteArray> &uris) {
    auto data = std::make_unique<QMimeData>();
    data->setData(QStringLiteral("text/uri-list"), uris.join("\r\n"));
    return data;
}

QByteArray FileUri(const QByteArray &path) {
    return "file://" + path.toPercentEncoding("/");
}

class TitleDropsTest : public TitlesTest {
protected:
    void SetUp() override {
        TitlesTest::SetUp();
        title = AddTitle(kSideLeft);
        title->menuSpec->folder = FSSpec{menuFolder.path()};
        for (const char *folder : {"one", "two", "three"}) {
            items.mkdir(folder);
            items.touch(QByteArray(folder) + "/report.pdf");
        }
    }
    void TearDown() override {
        DestroyFolderCachedMenu(nullptr);
        TitlesTest::TearDown();
    }

    TitleWindow *window() const { return static_cast<TitleWindow *>(title->window); }
    QList<QByteArray> Reports() const {
        return {FileUri(items.at("one/report.pdf")), FileUri(items.at("two/report.pdf")),
                FileUri(items.at("three/report.pdf"))};
    }

    // Enters the window and moves inside it, as a drag source does; returns
    // the action answered, IgnoreAction when refused.
    Qt::DropAction Hover(const QMimeData *data, Qt::DropActions actions = kFileManagerActions) {
        QDragEnterEvent enter(QPoint(20, 10), actions, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window(), &enter);
        if (!enter.isAccepted())
            return Qt::IgnoreAction;
        QDragMoveEvent move(QPoint(21, 10), actions, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window(), &move);
        return move.isAccepted() ? move.dropAction() : Qt::IgnoreAction;
    }
    // A drop comes after the drag entered, which makes the window its target.
    Qt::DropAction Drop(const QMimeData *data, Qt::DropActions actions = kFileManagerActions) {
        Hover(data, actions);
        QDropEvent drop(QPointF(20, 10), actions, data, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(window(), &drop);
        return drop.isAccepted() ? drop.dropAction() : Qt::IgnoreAction;
    }

    Folder menuFolder;
    Folder items;
    ReadyMenu *title = nullptr;
};

TEST_F(TitleDropsTest, ATitleTakesOnlyLocalFilesAndNeverAMove) {
    const auto files = UriList(Reports());
    const auto mixed = UriList({FileUri(items.at("one")), "https://example.org/page"});
    auto text = std::make_unique<QMimeData>();
    text->setText(QStringLiteral("file:///tmp/a"));
    EXPECT_EQ(Hover(files.get()), Qt::LinkAction);
    EXPECT_EQ(window()->dragHighlight(), QRegion(QRect(0, 0, 45, 22)));
    QDragLeaveEvent leave;
    QApplication::sendEvent(window(), &leave);
    EXPECT_TRUE(window()->dragHighlight().isEmpty());
    EXPECT_EQ(Hover(files.get(), Qt::CopyAction | Qt::MoveAction), Qt::CopyAction);
    for (const QMimeData *refused : {mixed.get(), text.get()}) {
        EXPECT_EQ(Hover(refused), Qt::IgnoreAction);
        EXPECT_TRUE(window()->dragHighlight().isEmpty()) << "refused: no highlight";
        EXPECT_EQ(Drop(refused), Qt::IgnoreAction);
    }
    EXPECT_EQ(Hover(files.get(), Qt::MoveAction), Qt::IgnoreAction) << "it would delete the file";
    title->menuSpec->contents = kContentsProcesses; // a title of no folder takes nothing
    EXPECT_EQ(Hover(files.get()), Qt::IgnoreAction);
    EXPECT_EQ(Drop(files.get()), Qt::IgnoreAction);
    EXPECT_TRUE(menuFolder.enumerationOrder().isEmpty());
    title->menuSpec->contents = kContentsFolder;
    EXPECT_EQ(Drop(UriList({}).get()), Qt::LinkAction) << "no items: taken, nothing made";
    EXPECT_TRUE(menuFolder.enumerationOrder().isEmpty());
}

TEST_F(TitleDropsTest, EachItemBecomesALinkInOrderAndTheCachedMenuIsDropped) {
    ASSERT_EQ(InitializeFolderCachedMenu(title), noErr);
    ASSERT_NE(title->cachedMenu, nullptr);
    const QList<QByteArray> odd{"a name with spaces", "hash#and%25percent", "two\nlines",
                                "not utf-8 \xff\xfe", QByteArray(255, 'n')};
    QList<QByteArray> uris = Reports();
    for (const QByteArray &name : odd) {
        items.touch(name);
        uris.append(FileUri(items.at(name)));
    }
    EXPECT_EQ(Drop(UriList(uris).get()), Qt::LinkAction);
    // Three items of one name: the numbering shows the order they were linked in.
    EXPECT_EQ(LinkTarget(menuFolder.at("report.pdf")), items.at("one/report.pdf"));
    EXPECT_EQ(LinkTarget(menuFolder.at("report (2).pdf")), items.at("two/report.pdf"));
    EXPECT_EQ(LinkTarget(menuFolder.at("report (3).pdf")), items.at("three/report.pdf"));
    for (const QByteArray &name : odd)
        EXPECT_EQ(LinkTarget(menuFolder.at(name)), items.at(name)) << name.toHex().constData();
    EXPECT_EQ(title->cachedMenu, nullptr) << "the next click lists the new links";
    EXPECT_TRUE(window()->dragHighlight().isEmpty());
}

TEST_F(TitleDropsTest, AFailureStopsTheDropWithItsStatusAndKeepsTheEarlierLinks) {
    QByteArray tooLong = "/"; // a link to a path longer than any the system takes
    while (tooLong.size() <= PATH_MAX)
        tooLong += "deep/";
    const Drag files = DragFromMimeData(UriList(Reports()).get());
    Drag failing = files;
    failing.items[1] = DragFromMimeData(UriList({FileUri(tooLong)}).get()).items[0];
    ASSERT_EQ(InitializeFolderCachedMenu(title), noErr);
    EXPECT_EQ(MenuDragReceiveHandler(title->window, title, failing), bdNamErr);
    EXPECT_EQ(menuFolder.enumerationOrder(), QList<QByteArray>{"report.pdf"});
    EXPECT_EQ(title->cachedMenu, nullptr) << "dropped after the first link already";

    // An item that reached AcceptDrag without a file: the ones before it stay.
    Drag unchecked = files;
    unchecked.items[1] = DragItem{{{kDragFlavorTypeMIME, "text/plain"}}};
    EXPECT_EQ(AcceptDrag(title, unchecked), badDragFlavorErr);
    EXPECT_EQ(menuFolder.enumerationOrder().size(), 2);
    title->menuSpec->folder = FSSpec{menuFolder.at("gone")};
    EXPECT_EQ(AcceptDrag(title, files), fnfErr);
}

TEST(TitleDragData, AddressesOfThisMachineBecomePathsAndEverythingElseStaysAnAddress) {
    const QByteArray host = QSysInfo::machineHostName().toUtf8();
    const std::pair<QByteArray, QByteArray> cases[] = {
        {"file:///home/ann/a%20b", "/home/ann/a b"},
        {"file://localhost/tmp/x", "/tmp/x"},
        {"FILE:///tmp/x", "/tmp/x"},
        {"file:/tmp/x", "/tmp/x"},
        {"file://" + host + "/tmp/x", "/tmp/x"},
        {"file:///tmp/%23%3F%25%0A%FF", "/tmp/#?%\n\xff"},
        {"file:///tmp/x?query#fragment", "/tmp/x"},
        {"file:///", "/"},
        {"file://elsewhere.example/tmp/x", ""},
        {"file://localhost", ""},
        {"file:relative/x", ""},
        {"file:///tmp/nul%00byte", ""},
        {"https://example.org/tmp/x", ""},
    };
    for (const auto &[uri, path] : cases)
        EXPECT_EQ(LocalPathFromUri(uri), path) << uri.constData();

    QMimeData list;
    list.setData(QStringLiteral("text/uri-list"),
                 "# a comment\r\nfile:///tmp/a\r\nhttps://example.org/b\r\n\r\nfile:///tmp/c\n");
    const Drag drag = DragFromMimeData(&list);
    ASSERT_EQ(drag.items.size(), 3u);
    EXPECT_EQ(drag.items[0].flavors[0].data, "/tmp/a");
    ASSERT_EQ(drag.items[1].flavors.size(), 1u);
    EXPECT_EQ(drag.items[1].flavors[0].type, kDragFlavorTypeURL);
    EXPECT_EQ(drag.items[2].flavors[0].data, "/tmp/c");
    QMimeData nothing;
    EXPECT_TRUE(DragFromMimeData(&nothing).items.empty());
}

} // namespace
