// Trust marks in the desktop's metadata store, through GIO (GVfs keeps it).
#pragma once

#include "platform/trustmarks.h"

namespace platform {

class GioTrustMarks final : public TrustMarks {
public:
    GioTrustMarks();
    bool isMarkedTrusted(const QByteArray &path) override;
    void markTrusted(const QByteArray &path, std::function<void(OSErr)> done) override;
};

} // namespace platform
