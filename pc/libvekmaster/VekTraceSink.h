#pragma once

#include <string>

#include "VekTracePacket.h"

namespace vekmaster {

// Where a line hands each packet it splits off its traffic. Lines of several threads
// may share one sink: it takes its own lock.
class VekTraceSink {
public:
    virtual ~VekTraceSink() = default;
    // packet.line is not set: the sink numbers the lines by path.
    virtual void record(const std::string& path, const VekTracePacket& packet) = 0;
};

}  // namespace vekmaster
