#include "core/lists.h"
#include "platform/doubles/fakealerts.h"
#include "platform/service.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

struct Node {
    Node *next = nullptr;
    char name = '?';
};

QByteArray Names(Node *head) {
    QByteArray names;
    for (; head != nullptr; head = head->next)
        names += head->name;
    return names;
}

class ListsTest : public ::testing::Test {
protected:
    Node p{nullptr, 'P'}, q{nullptr, 'Q'}, r{nullptr, 'R'}, x{nullptr, 'X'};
    Node *head = nullptr;
};

TEST_F(ListsTest, PushingBeforeTheHeadBuildsAStack) {
    AddToLinkedList(&head, &p, head);
    AddToLinkedList(&head, &q, head);
    AddToLinkedList(&head, &r, head);
    EXPECT_EQ(Names(head), "RQP");
}

TEST_F(ListsTest, NullSuccessorAppends) {
    AddToLinkedList(&head, &x, static_cast<Node *>(nullptr));
    EXPECT_EQ(Names(head), "X");
    EXPECT_EQ(x.next, nullptr);

    head = nullptr;
    AddToLinkedList(&head, &p, static_cast<Node *>(nullptr));
    AddToLinkedList(&head, &q, static_cast<Node *>(nullptr));
    AddToLinkedList(&head, &x, static_cast<Node *>(nullptr));
    EXPECT_EQ(Names(head), "PQX");
}

TEST_F(ListsTest, InsertsInTheMiddleAndIgnoresAnUnlistedSuccessor) {
    AddToLinkedList(&head, &p, static_cast<Node *>(nullptr));
    AddToLinkedList(&head, &r, static_cast<Node *>(nullptr));
    AddToLinkedList(&head, &q, &r);
    EXPECT_EQ(Names(head), "PQR");

    Node stranger{nullptr, 'S'};
    x.next = &p; // must stay as it is
    AddToLinkedList(&head, &x, &stranger);
    EXPECT_EQ(Names(head), "PQR");
    EXPECT_EQ(x.next, &p);
}

TEST_F(ListsTest, RemovalUnlinksWithoutTouchingTheRecord) {
    for (Node *n : {&p, &q, &r})
        AddToLinkedList(&head, n, static_cast<Node *>(nullptr));
    RemoveFromLinkedList(&head, &r);
    EXPECT_EQ(Names(head), "PQ");
    EXPECT_EQ(q.next, nullptr);

    RemoveFromLinkedList(&head, &x); // not listed
    EXPECT_EQ(Names(head), "PQ");

    RemoveFromLinkedList(&head, &p);
    EXPECT_EQ(Names(head), "Q");
    EXPECT_EQ(p.next, &q) << "a removed record keeps its own link";

    Node *empty = nullptr;
    RemoveFromLinkedList(&empty, &p);
    EXPECT_EQ(empty, nullptr);
}

TEST_F(ListsTest, IndexingAndCounting) {
    for (Node *n : {&p, &q, &r})
        AddToLinkedList(&head, n, static_cast<Node *>(nullptr));
    EXPECT_EQ(GetLinkedListItem(&head, 1), &p);
    EXPECT_EQ(GetLinkedListItem(&head, 2), &q);
    EXPECT_EQ(GetLinkedListItem(&head, 3), &r);
    EXPECT_EQ(GetLinkedListItem(&head, 4), nullptr);
    EXPECT_EQ(GetLinkedListItem(&p, 0), &p);
    EXPECT_EQ(GetLinkedListItem(&p, 2), &r);

    EXPECT_EQ(CountLinkedListItems<Node>(nullptr), 0);
    EXPECT_EQ(CountLinkedListItems(&p), 3);
    EXPECT_EQ(CountLinkedListItems(&q), 2);
}

TEST(MemoryBlocks, AShortageIsReportedAndGivesNull) {
    platform::FakeAlerts alerts;
    platform::ScopedService<platform::Alerts> installed(&alerts);

    OSErr err = noErr;
    Ptr block = AllocPtr(&err, std::numeric_limits<Size>::max() / 2);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(err, memFullErr);
    ASSERT_EQ(alerts.alerts.size(), 1);
    EXPECT_EQ(alerts.alerts[0].status, -108);

    Handle handle = AllocHandle(&err, std::numeric_limits<Size>::max() / 2);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(err, memFullErr);
    EXPECT_EQ(alerts.alerts.size(), 2);
}

TEST(MemoryBlocks, BlocksAndHandlesHoldTheirBytes) {
    platform::FakeAlerts alerts;
    platform::ScopedService<platform::Alerts> installed(&alerts);

    OSErr err = paramErr;
    Ptr block = AllocPtr(&err, 300);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(err, noErr);
    std::memset(block, 0xAB, 300);
    DestroyPtr(block);

    Handle handle = AllocHandle(&err, 70);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(GetHandleSize(handle), 70);
    std::memset(*handle, 0x5A, 70);
    DestroyHandle(handle);

    Handle empty = AllocHandle(&err, 0);
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(GetHandleSize(empty), 0);
    DestroyHandle(empty);

    DestroyPtr(nullptr);    // harmless
    DestroyHandle(nullptr); // harmless
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

} // namespace
