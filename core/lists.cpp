#include "core/lists.h"

#include <cstdlib>

// A handle is a master pointer to the block; the block's size is kept just
// before its first byte so that GetHandleSize needs no other bookkeeping.

Ptr AllocPtr(OSErr *err, Size size) {
    Ptr block = size < 0 ? nullptr : static_cast<Ptr>(std::malloc(size == 0 ? 1 : size));
    *err = TestMemError(block);
    if (*err != noErr) {
        std::free(block);
        return nullptr;
    }
    return block;
}

Handle AllocHandle(OSErr *err, Size size) {
    Handle handle = nullptr;
    if (size >= 0) {
        auto *master = static_cast<Ptr *>(std::malloc(sizeof(Ptr)));
        auto *block = static_cast<Size *>(std::malloc(sizeof(Size) + std::size_t(size)));
        if (master != nullptr && block != nullptr) {
            *block = size;
            *master = reinterpret_cast<Ptr>(block + 1);
            handle = master;
        } else {
            std::free(master);
            std::free(block);
        }
    }
    *err = TestMemError(handle);
    return *err == noErr ? handle : nullptr;
}

void DestroyPtr(Ptr block) {
    std::free(block);
}

void DestroyHandle(Handle handle) {
    if (handle == nullptr)
        return;
    std::free(reinterpret_cast<Size *>(*handle) - 1);
    std::free(handle);
}

Size GetHandleSize(Handle handle) {
    return handle == nullptr ? 0 : *(reinterpret_cast<Size *>(*handle) - 1);
}
