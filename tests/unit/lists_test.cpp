#include "core/lists.h"
#include "platform/doubles/fakealerts.h"
#include "tests/support/installed.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

struct Node {
    Node *next = nullptr;
    char name = '?';
};

// Each case edits the list "PQR"; '-' names null, 'S' a record never listed.
TEST(Lists, EditsLinkAndUnlinkWhereTheyShould) {
    struct Case {
        const char *edit; // "+XB": add X before B; "-X": remove X
        const char *list;
    };
    const Case cases[] = {
        {"+XP", "XPQR"}, {"+X-", "PQRX"}, {"+XR", "PQXR"}, {"+XS", "PQR"},
        {"-P", "QR"},    {"-Q", "PR"},    {"-R", "PQ"},    {"-S", "PQR"},
    };
    for (const Case &c : cases) {
        Node nodes[] = {
            {nullptr, 'P'}, {nullptr, 'Q'}, {nullptr, 'R'}, {nullptr, 'S'}, {nullptr, 'X'}};
        const auto named = [&](char name) -> Node * {
            for (Node &node : nodes)
                if (node.name == name)
                    return &node;
            return nullptr;
        };
        Node *head = nullptr;
        for (char name : {'P', 'Q', 'R'})
            AddToLinkedList(&head, named(name), static_cast<Node *>(nullptr));
        if (c.edit[0] == '+')
            AddToLinkedList(&head, named(c.edit[1]), named(c.edit[2]));
        else
            RemoveFromLinkedList(&head, named(c.edit[1]));
        QByteArray names;
        for (Node *node = head; node != nullptr; node = node->next)
            names += node->name;
        EXPECT_EQ(names, c.list) << c.edit;
        EXPECT_EQ(CountLinkedListItems(head), long(std::strlen(c.list))) << c.edit;
        EXPECT_EQ(GetLinkedListItem(&head, 2), named(c.list[1])) << c.edit;
        EXPECT_EQ(GetLinkedListItem(&head, 0), nullptr) << "the head is no record";
    }
}

TEST(MemoryBlocks, AShortageIsReportedAndGivesNull) {
    Installed<platform::FakeAlerts, platform::Alerts> alerts;
    OSErr err = noErr;
    EXPECT_EQ(AllocPtr(&err, std::numeric_limits<Size>::max() / 2), nullptr);
    EXPECT_EQ(err, memFullErr);
    EXPECT_EQ(AllocHandle(&err, std::numeric_limits<Size>::max() / 2), nullptr);
    ASSERT_EQ(alerts.alerts.size(), 2);
    EXPECT_EQ(alerts.alerts[1].status, -108);

    Handle handle = AllocHandle(&err, 70);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(GetHandleSize(handle), 70);
    DestroyHandle(handle);
}

} // namespace
