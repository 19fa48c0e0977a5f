#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "VekFrameHub.h"
#include "VekMessageCatalog.h"

namespace vekmaster {

// Feeds the line's bytes to a frame hub, and follows each frame's header on the way so
// that the master can tell how far a long answer has come. The hub holds at most
// kCacheSize bytes per frame; a frame that cannot fit is not fed to it but counted off
// the line byte by byte, and the hub starts afresh behind it, so the link stays usable.
class VekFrameReceiver {
public:
    explicit VekFrameReceiver(VekMessageCatalog& catalog);

    void feed(const char* data, size_t size);

    // A frame has begun and is not complete yet.
    bool inFrame() const { return state_ != Search; }
    // The raw data length the frame in progress announces, and how much of it is here.
    int32_t announced() const { return state_ == Raw ? announced_ : 0; }
    int32_t arrived() const { return announced_ - rawLeft_; }
    // The raw length of a frame that was too large for the hub and has now passed;
    // 0 when there was none since the last call.
    int32_t takeDropped();

private:
    enum State { Search, Header, Raw };

    // Scans up to and including a header's line feed; returns the bytes it looked at.
    size_t scan(const char* data, size_t size);
    // What the hub will read from the header line: the raw length, or 0 for none.
    int32_t rawLengthOf(const std::string& line) const;
    void headerDone();

    VekMessageCatalog& catalog_;
    std::unique_ptr<vekprotocol::VekFrameHub> hub_;
    State state_ = Search;
    char previous_ = 0;
    bool complete_ = false;  // scan stopped behind a header line
    std::string line_;
    int32_t announced_ = 0;
    int32_t rawLeft_ = 0;
    bool skipping_ = false;
    int32_t dropped_ = 0;
};

}  // namespace vekmaster
