// Trust marks kept in a set.
#pragma once

#include "platform/trustmarks.h"

#include <QSet>

namespace platform {

class FakeTrustMarks : public TrustMarks {
public:
    bool isMarkedTrusted(const QByteArray &path) override { return marked.contains(path); }
    void markTrusted(const QByteArray &path, std::function<void(OSErr)> done) override {
        if (failure == noErr)
            marked.insert(path);
        done(failure);
    }
    QSet<QByteArray> marked;
    OSErr failure = noErr;
};

} // namespace platform
