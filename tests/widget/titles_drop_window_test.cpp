// A title window taking Qt's drag events with real drag data: what it answers
// the drag source, the highlight as drawn, and the links a drop makes.
#include "tests/unit/foldermenu_testfolder.h"
#include "tests/widget/titles_fixture.h"

#include "titles/titledrops.h"
#include "titles/titlewindow.h"

#include <QApplication>
#include <QDropEvent>
#include <QImage>
#include <QMimeData>
#include <QUrl>

#include <climits>

namespace {

constexpr Qt::DropActions kFileManagerActions = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;

class TitleDropWindowTest : public TitlesTest {
protected:
    void SetUp() override {
        TitlesTest::SetUp();
        title = AddTitle(kSideLeft);
        title->menuSpec->folder = FSSpec{menuFolder.path()};
        for (const char *name : {"first", "second", "third"})
            items.touch(name);
        plain = Picture();
    }

    TitleWindow *window() const { return static_cast<TitleWindow *>(title->window); }
    QImage Picture() const { return window()->grab().toImage(); }

    static QMimeData *Files(const QList<QByteArray> &paths) {
        auto *data = new QMimeData;
        QList<QUrl> urls;
        for (const QByteArray &path : paths)
            urls.append(QUrl::fromLocalFile(QFile::decodeName(path)));
        data->setUrls(urls);
        return data;
    }
    static QMimeData *Text() {
        auto *data = new QMimeData;
        data->setText(QStringLiteral("a few words"));
        return data;
    }

    // Enters the window and moves inside it, as a drag source's first
    // position does; returns whether the move was accepted.
    bool EnterAndMove(const QMimeData *data, Qt::DropActions actions = kFileManagerActions,
                      Qt::DropAction *answered = nullptr) {
        const QPointF inside(20, 10);
        QDragEnterEvent enter(inside.toPoint(), actions, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window(), &enter);
        if (!enter.isAccepted())
            return false;
        QDragMoveEvent move(inside.toPoint(), actions, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window(), &move);
        if (answered != nullptr)
            *answered = move.dropAction();
        return move.isAccepted();
    }
    bool Drop(const QMimeData *data, Qt::DropActions actions = kFileManagerActions,
              Qt::DropAction *answered = nullptr) {
        QDropEvent drop(QPointF(20, 10), actions, data, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(window(), &drop);
        if (answered != nullptr)
            *answered = drop.dropAction();
        return drop.isAccepted();
    }
    void Leave() {
        QDragLeaveEvent leave;
        QApplication::sendEvent(window(), &leave);
    }

    QList<QByteArray> Links() const {
        QList<QByteArray> links;
        for (const QByteArray &name : menuFolder.enumerationOrder()) {
            char target[PATH_MAX];
            const ssize_t length = ::readlink(menuFolder.at(name).constData(), target, PATH_MAX);
            links.append(name + " -> " + QByteArray(target, length < 0 ? 0 : length));
        }
        std::sort(links.begin(), links.end());
        return links;
    }

    Folder menuFolder;
    Folder items;
    ReadyMenu *title = nullptr;
    QImage plain;
};

TEST_F(TitleDropWindowTest, FilesOverTheTitleHighlightItAndTheirDropMakesLinks) {
    std::unique_ptr<QMimeData> data(
        Files({items.at("first"), items.at("second"), items.at("third")}));
    Qt::DropAction answered = Qt::IgnoreAction;
    ASSERT_TRUE(EnterAndMove(data.get(), kFileManagerActions, &answered));
    EXPECT_EQ(answered, Qt::LinkAction) << "a link, never a move";
    EXPECT_EQ(window()->dragHighlight(), QRegion(window()->rect()));
    const QImage highlighted = Picture();
    EXPECT_NE(highlighted, plain);
    // Both the middle and the corners of the window change.
    EXPECT_NE(highlighted.pixel(1, 1), plain.pixel(1, 1));
    EXPECT_NE(highlighted.pixel(highlighted.width() - 2, highlighted.height() - 2),
              plain.pixel(plain.width() - 2, plain.height() - 2));
    EXPECT_TRUE(menuFolder.enumerationOrder().isEmpty()) << "nothing before the drop";

    ASSERT_TRUE(Drop(data.get(), kFileManagerActions, &answered));
    EXPECT_EQ(answered, Qt::LinkAction);
    EXPECT_EQ(Links(),
              (QList<QByteArray>{"first -> " + items.at("first"), "second -> " + items.at("second"),
                                 "third -> " + items.at("third")}));
    EXPECT_TRUE(window()->dragHighlight().isEmpty());
    EXPECT_EQ(Picture(), plain);
}

TEST_F(TitleDropWindowTest, TextIsRefusedWithoutAHighlightAndItsDropMakesNothing) {
    std::unique_ptr<QMimeData> data(Text());
    EXPECT_FALSE(EnterAndMove(data.get()));
    EXPECT_TRUE(window()->dragHighlight().isEmpty());
    EXPECT_EQ(Picture(), plain);
    EXPECT_FALSE(Drop(data.get()));
    EXPECT_TRUE(menuFolder.enumerationOrder().isEmpty());

    // Files mixed with an address of another machine: refused as a whole.
    std::unique_ptr<QMimeData> mixed(Files({items.at("first")}));
    mixed->setUrls({QUrl::fromLocalFile(QFile::decodeName(items.at("first"))),
                    QUrl(QStringLiteral("https://example.org/page"))});
    EXPECT_FALSE(EnterAndMove(mixed.get()));
    EXPECT_TRUE(window()->dragHighlight().isEmpty());
    EXPECT_FALSE(Drop(mixed.get()));
    EXPECT_TRUE(menuFolder.enumerationOrder().isEmpty());
}

TEST_F(TitleDropWindowTest, TheHighlightGoesWhenTheDragLeavesOrTurnsUnacceptable) {
    std::unique_ptr<QMimeData> files(Files({items.at("first")}));
    ASSERT_TRUE(EnterAndMove(files.get()));
    ASSERT_FALSE(window()->dragHighlight().isEmpty());
    Leave();
    EXPECT_TRUE(window()->dragHighlight().isEmpty());
    EXPECT_EQ(Picture(), plain);

    // The title stops showing a folder while the drag is over it.
    ASSERT_TRUE(EnterAndMove(files.get()));
    title->menuSpec->contents = kContentsProcesses;
    QDragMoveEvent move(QPoint(21, 10), kFileManagerActions, files.get(), Qt::LeftButton,
                        Qt::NoModifier);
    QApplication::sendEvent(window(), &move);
    EXPECT_FALSE(move.isAccepted());
    EXPECT_TRUE(window()->dragHighlight().isEmpty());
    EXPECT_FALSE(Drop(files.get()));
    EXPECT_TRUE(menuFolder.enumerationOrder().isEmpty());
}

TEST_F(TitleDropWindowTest, ASourceThatOnlyCopiesGetsACopyAndOneThatOnlyMovesIsTurnedAway) {
    std::unique_ptr<QMimeData> files(Files({items.at("second")}));
    Qt::DropAction answered = Qt::IgnoreAction;
    ASSERT_TRUE(EnterAndMove(files.get(), Qt::CopyAction, &answered));
    EXPECT_EQ(answered, Qt::CopyAction);
    ASSERT_TRUE(Drop(files.get(), Qt::CopyAction, &answered));
    EXPECT_EQ(answered, Qt::CopyAction);
    EXPECT_EQ(Links(), QList<QByteArray>{"second -> " + items.at("second")});

    // Taking a move would have the source delete the file we link to.
    EXPECT_FALSE(EnterAndMove(files.get(), Qt::MoveAction));
    EXPECT_TRUE(window()->dragHighlight().isEmpty());
    EXPECT_FALSE(Drop(files.get(), Qt::MoveAction));
    EXPECT_EQ(menuFolder.enumerationOrder().size(), 1);
}

TEST_F(TitleDropWindowTest, ADragWithNoItemsIsTakenAndDoesNothing) {
    QMimeData empty;
    empty.setData(QStringLiteral("text/uri-list"), QByteArray());
    EXPECT_TRUE(EnterAndMove(&empty));
    EXPECT_TRUE(Drop(&empty));
    EXPECT_TRUE(menuFolder.enumerationOrder().isEmpty());
}

} // namespace
