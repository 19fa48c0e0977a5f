#pragma once

#include <cstdint>

#include "VekSerDes.h"

namespace vekprotocol {

// How a frame's header line is cut into its header and payload fields; the one cut
// for both ends, so that the master reads an answer exactly as the slave reads a request.
class VekHeaderLine {
public:
    // line starts at the frame's "A"; lf is the position of its line feed. The header
    // text runs from behind "AS:" to the separator before the payload block, or to the
    // terminator when the line has no block. rawOffset is the first byte behind lf.
    static void cut(const char* line, int32_t lf, VekFields& header, VekFields& payload,
                    uint32_t& rawOffset);
    // The raw data length the header fields announce; false when the header is not a
    // frame's (fewer than six fields, or a length that is not a 32-bit decimal number).
    static bool readLength(const VekFields& header, int32_t& length);
};

}  // namespace vekprotocol
