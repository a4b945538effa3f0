// Intrusive singly linked lists and memory blocks.
//
// A listed record starts with its own link `next`; a list is a head pointer to
// its first record. The head behaves like the link of a pseudo-record standing
// before the first real one, which is what lets the walks below treat "insert
// before the first record" and "insert after record k" alike.
#pragma once

#include "core/errors.h"
#include "core/types.h"

#include <cstddef>
#include <new>

// Links `item` in immediately before `before`. `before` equal to the first record
// (or null on an empty list) makes `item` the first record; null on a non-empty
// list appends. A `before` that is not in the list changes nothing.
template <typename Record> void AddToLinkedList(Record **head, Record *item, Record *before) {
    if (*head == before) {
        item->next = before;
        *head = item;
        return;
    }
    for (Record *previous = *head; previous != nullptr; previous = previous->next) {
        if (previous->next == before) {
            item->next = before;
            previous->next = item;
            return;
        }
    }
}

// Unlinks `item`; a record that is not listed leaves everything unchanged. The
// record keeps its own `next` and is not freed.
template <typename Record> void RemoveFromLinkedList(Record **head, Record *item) {
    if (*head == nullptr)
        return;
    if (*head == item) {
        *head = item->next;
        return;
    }
    for (Record *previous = *head; previous->next != nullptr; previous = previous->next) {
        if (previous->next == item) {
            previous->next = item->next;
            return;
        }
    }
}

// Follows the link `index` times from `start`; index 0 is `start` itself.
template <typename Record> Record *GetLinkedListItem(Record *start, long index) {
    for (; start != nullptr && index > 0; --index)
        start = start->next;
    return start;
}

// The head form: index 1 is the first record. Index 0 would be the head itself,
// which is no record, so it gives null.
template <typename Record> Record *GetLinkedListItem(Record **head, long index) {
    return index < 1 ? nullptr : GetLinkedListItem(*head, index - 1);
}

template <typename Record> long CountLinkedListItems(const Record *first) {
    long count = 0;
    for (; first != nullptr; first = first->next)
        ++count;
    return count;
}

using Size = long;
using Ptr = char *;
using Handle = char **;

// A block of `size` bytes, contents not cleared. A shortage is reported through
// TestMemError and gives null.
Ptr AllocPtr(OSErr *err, Size size);
Handle AllocHandle(OSErr *err, Size size);
void DestroyPtr(Ptr block);       // null is harmless
void DestroyHandle(Handle block); // null is harmless
Size GetHandleSize(Handle block);

// The typed form used for records: value-initialised, reported like AllocPtr.
template <typename Record> Record *AllocRecord(OSErr *err) {
    Record *record = new (std::nothrow) Record();
    *err = TestMemError(record);
    return record;
}

template <typename Record> void DestroyRecord(Record *record) {
    delete record;
}
