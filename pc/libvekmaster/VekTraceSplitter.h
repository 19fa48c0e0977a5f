#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "VekTracePacket.h"

namespace vekmaster {

// Cuts one direction of a line's byte stream into packets as the frame layer cuts it:
// a frame from its "AS" through its header line and the raw data its length announces,
// and every run of bytes between frames as a stray packet. A frame's time is that of its
// last byte; a stray run is handed on at the end of the read it came in (less an "A"
// that may begin a frame).
class VekTraceSplitter {
public:
    // The longest header line taken for one, as the master's frame reader bounds it.
    static constexpr size_t kMaxHeaderLine = 40960;

    void feed(const char* data, size_t size, int64_t timeUs, std::vector<VekTracePacket>& out);
    // Whatever is held (a frame cut short) as a stray packet.
    void flush(int64_t timeUs, std::vector<VekTracePacket>& out);

private:
    enum State { Search, Header, Raw };

    void emit(bool stray, int64_t timeUs, std::vector<VekTracePacket>& out);
    void headerDone(int64_t timeUs, std::vector<VekTracePacket>& out);

    State state_ = Search;
    std::string held_;  // the stray run or the frame being assembled
    int64_t rawLeft_ = 0;
};

}  // namespace vekmaster
