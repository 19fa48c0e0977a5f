#pragma once

#include <cstdint>
#include <string>

namespace vekmaster {

// One capture record: a whole frame as it crossed the line, or a run of bytes that
// belong to no frame (the greeting, noise, the rest of a frame cut short).
struct VekTracePacket {
    uint32_t line = 0;      // index into the trace's lines
    bool outbound = false;  // master to device
    int64_t timeUs = 0;     // microseconds since the epoch; 0 when only the order is known
    bool stray = false;     // not a frame
    std::string bytes;
};

}  // namespace vekmaster
