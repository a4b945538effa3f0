#include "core/lists.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

struct Node {
    Node *next = nullptr;
    char name = '?';
};

// Each case edits the list "PQR": "+XB" adds X before B, "-X" removes X; '-'
// names null, 'S' a record never listed.
TEST(Lists, EditsLinkAndUnlinkWhereTheyShould) {
    const std::pair<const char *, const char *> cases[] = {
        {"+XP", "XPQR"}, {"+X-", "PQRX"}, {"+XR", "PQXR"}, {"+XS", "PQR"},
        {"-P", "QR"},    {"-Q", "PR"},    {"-R", "PQ"},    {"-S", "PQR"},
    };
    for (const auto &[edit, expected] : cases) {
        Node nodes[] = {
            {nullptr, 'P'}, {nullptr, 'Q'}, {nullptr, 'R'}, {nullptr, 'S'}, {nullptr, 'X'}};
        const auto named = [&](char name) {
            Node *node = std::find_if(std::begin(nodes), std::end(nodes),
                                      [&](const Node &n) { return n.name == name; });
            return node == std::end(nodes) ? nullptr : node;
        };
        Node *head = nullptr;
        for (char name : {'P', 'Q', 'R'})
            AddToLinkedList(&head, named(name), static_cast<Node *>(nullptr));
        if (edit[0] == '+')
            AddToLinkedList(&head, named(edit[1]), named(edit[2]));
        else
            RemoveFromLinkedList(&head, named(edit[1]));
        QByteArray names;
        for (Node *node = head; node != nullptr; node = node->next)
            names += node->name;
        EXPECT_EQ(names, expected) << edit;
        EXPECT_EQ(CountLinkedListItems(head), long(names.size())) << edit;
        EXPECT_EQ(GetLinkedListItem(&head, 2), named(expected[1])) << edit;
    }
}

} // namespace
