#include "VekHeaderLine.h"

#include <algorithm>
#include <cstring>

#include "VekText.h"

namespace vekprotocol {

namespace {

// Splits like a line-reading loop with ':' as the line end: empty pieces between
// separators are kept, a separator at the very end adds nothing, "" gives nothing.
void split(const char* text, int32_t length, VekFields& out) {
    out.clear();
    int32_t begin = 0;
    for (int32_t i = 0; i < length; ++i) {
        if (text[i] == ':') {
            out.emplace_back(text + begin, static_cast<size_t>(i - begin));
            begin = i + 1;
        }
    }
    if (begin < length) {
        out.emplace_back(text + begin, static_cast<size_t>(length - begin));
    }
}

}  // namespace

void VekHeaderLine::cut(const char* line, int32_t lf, VekFields& header, VekFields& payload,
                        uint32_t& rawOffset) {
    const void* ltFound = (lf >= 2 && line[lf - 2] == '>')
                              ? std::memchr(line, '<', static_cast<size_t>(lf))
                              : nullptr;
    int32_t headerLength = lf - 4;
    int32_t payloadStart = 0;
    int32_t payloadLength = 0;
    if (ltFound != nullptr) {
        const int32_t lt = static_cast<int32_t>(static_cast<const char*>(ltFound) - line);
        headerLength = lt - 4;
        payloadStart = lt + 1;
        payloadLength = std::max(lf - 3 - lt, 0);
    }
    split(line + 3, std::max(headerLength, 0), header);
    split(line + payloadStart, payloadLength, payload);
    rawOffset = static_cast<uint32_t>(lf + 1);
}

bool VekHeaderLine::readLength(const VekFields& header, int32_t& length) {
    length = 0;
    return header.size() >= 6 && VekText::readInt(header[4], length);
}

}  // namespace vekprotocol
