#include "VekTraceSplitter.h"

#include <algorithm>

#include "VekHeaderLine.h"

namespace vekmaster {

void VekTraceSplitter::emit(bool stray, int64_t timeUs, std::vector<VekTracePacket>& out) {
    if (!held_.empty()) {
        VekTracePacket packet;
        packet.timeUs = timeUs;
        packet.stray = stray;
        packet.bytes.swap(held_);
        out.push_back(std::move(packet));
    }
    held_.clear();
    state_ = Search;
}

void VekTraceSplitter::headerDone(int64_t timeUs, std::vector<VekTracePacket>& out) {
    vekprotocol::VekFields header;
    vekprotocol::VekFields payload;
    uint32_t rawOffset = 0;
    vekprotocol::VekHeaderLine::cut(held_.data(), static_cast<int32_t>(held_.size() - 1), header,
                                    payload, rawOffset);
    int32_t length = 0;
    // A header the device would drop is still a frame on the wire: it ends at its line feed.
    if (vekprotocol::VekHeaderLine::readLength(header, length) && length > 0) {
        rawLeft_ = length;
        state_ = Raw;
        return;
    }
    emit(false, timeUs, out);
}

void VekTraceSplitter::feed(const char* data, size_t size, int64_t timeUs,
                            std::vector<VekTracePacket>& out) {
    size_t at = 0;
    while (at < size) {
        if (state_ == Raw) {
            const size_t take = std::min(size - at, static_cast<size_t>(rawLeft_));
            held_.append(data + at, take);
            at += take;
            rawLeft_ -= static_cast<int64_t>(take);
            if (rawLeft_ == 0) {
                emit(false, timeUs, out);
            }
            continue;
        }
        const char c = data[at++];
        if (state_ == Header) {
            held_ += c;
            if (c == '\n') {
                headerDone(timeUs, out);
            } else if (held_.size() > kMaxHeaderLine) {
                emit(true, timeUs, out);
            }
            continue;
        }
        if (c == 'S' && !held_.empty() && held_.back() == 'A') {
            held_.pop_back();
            emit(true, timeUs, out);
            held_ = "AS";
            state_ = Header;
            continue;
        }
        held_ += c;
    }
    if (state_ == Search && !held_.empty()) {
        const bool maybeMagic = held_.back() == 'A';
        if (maybeMagic) {
            held_.pop_back();
        }
        emit(true, timeUs, out);
        if (maybeMagic) {
            held_ = "A";
        }
    }
}

void VekTraceSplitter::flush(int64_t timeUs, std::vector<VekTracePacket>& out) {
    emit(true, timeUs, out);
}

}  // namespace vekmaster
