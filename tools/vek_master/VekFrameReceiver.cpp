#include "VekFrameReceiver.h"

#include <algorithm>
#include <vector>

#include "VekText.h"

namespace vekmaster {

using vekprotocol::VekFrameHub;

VekFrameReceiver::VekFrameReceiver(VekMessageCatalog& catalog)
    : catalog_(catalog), hub_(catalog.makeHub()) {}

int32_t VekFrameReceiver::takeDropped() {
    const int32_t dropped = dropped_;
    dropped_ = 0;
    return dropped;
}

void VekFrameReceiver::feed(const char* data, size_t size) {
    while (size > 0) {
        size_t n = 0;
        if (state_ == Raw) {
            n = std::min(size, static_cast<size_t>(rawLeft_));
            rawLeft_ -= static_cast<int32_t>(n);
            if (!skipping_) {
                hub_->feed(data, static_cast<uint32_t>(n));
            }
            if (rawLeft_ == 0) {
                state_ = Search;
                if (skipping_) {
                    // The hub still holds the header of the dropped frame.
                    hub_ = catalog_.makeHub();
                    skipping_ = false;
                    dropped_ = announced_;
                }
            }
        } else {
            n = scan(data, size);
            hub_->feed(data, static_cast<uint32_t>(n));
            if (complete_) {
                headerDone();
            }
        }
        data += n;
        size -= n;
    }
}

size_t VekFrameReceiver::scan(const char* data, size_t size) {
    complete_ = false;
    for (size_t i = 0; i < size; ++i) {
        const char c = data[i];
        if (state_ == Search) {
            if (previous_ == 'A' && c == 'S') {
                state_ = Header;
                line_ = "AS";
            }
            previous_ = c;
        } else if (c == '\n') {
            complete_ = true;
            return i + 1;
        } else if (line_.size() < VekFrameHub::kCacheSize) {
            line_ += c;
        }
    }
    return size;
}

int32_t VekFrameReceiver::rawLengthOf(const std::string& line) const {
    // The hub's cut: the header text runs from behind "AS:" to the separator before the
    // payload block, or to the terminator when the line has no block.
    const int64_t lf = static_cast<int64_t>(line.size());
    const size_t lt = line.find('<');
    const bool block =
        lf >= 2 && line[static_cast<size_t>(lf - 2)] == '>' && lt != std::string::npos;
    const int64_t length = block ? static_cast<int64_t>(lt) - 4 : lf - 4;
    const std::string header = length > 0 ? line.substr(3, static_cast<size_t>(length)) : "";
    // Fields 0 to 5; the hub drops a header with fewer than six.
    std::vector<std::string> pieces;
    size_t begin = 0;
    for (size_t sep = header.find(':'); sep != std::string::npos; sep = header.find(':', begin)) {
        pieces.push_back(header.substr(begin, sep - begin));
        begin = sep + 1;
    }
    if (begin < header.size()) {
        pieces.push_back(header.substr(begin));
    }
    int32_t raw = 0;
    return pieces.size() >= 6 && vekprotocol::VekText::readInt(pieces[4], raw) && raw > 0 ? raw : 0;
}

void VekFrameReceiver::headerDone() {
    previous_ = 0;
    announced_ = rawLengthOf(line_);
    rawLeft_ = announced_;
    state_ = announced_ > 0 ? Raw : Search;
    // Everything the hub holds now stays until the frame completes.
    skipping_ = announced_ > 0 &&
                static_cast<uint64_t>(hub_->cachedLength()) + static_cast<uint64_t>(announced_) >
                    VekFrameHub::kCacheSize;
}

}  // namespace vekmaster
