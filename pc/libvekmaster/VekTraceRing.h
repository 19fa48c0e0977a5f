#pragma once

#include <cstddef>
#include <deque>
#include <mutex>
#include <string>

#include "VekTraceSink.h"

namespace vekmaster {

// The latest traffic of one line, kept in memory for a download: packets past the byte
// limit are dropped oldest first, so a server that runs for weeks keeps a bounded trace.
class VekTraceRing : public VekTraceSink {
public:
    static constexpr size_t kDefaultLimit = 16 * 1024 * 1024;

    explicit VekTraceRing(size_t limit = kDefaultLimit) : limit_(limit) {}

    void record(const std::string& path, const VekTracePacket& packet) override;
    // The packets held, as a capture file with the one line.
    std::string pcapng() const;
    // Packets dropped to stay within the limit.
    size_t dropped() const;

private:
    const size_t limit_;
    mutable std::mutex mutex_;
    std::string path_;
    std::deque<VekTracePacket> packets_;
    size_t bytes_ = 0;
    size_t dropped_ = 0;
};

}  // namespace vekmaster
