#include "VekFrameHub.h"

#include <algorithm>
#include <cstring>
#include <sstream>

#include "VekHeaderLine.h"

namespace vekprotocol {

VekFrameHub::VekFrameHub(VekSerDes* common, VekLogCallbackItf* log) : log_(log) {
    registry_["Common"] = common;
}

void VekFrameHub::registerEndpoint(const std::string& feature, VekSerDes* endpoint) {
    registry_[feature] = endpoint;
}

uint32_t VekFrameHub::nextSequence() {
    sequence_ = (sequence_ >= 65535) ? 1 : sequence_ + 1;
    return sequence_;
}

void VekFrameHub::listFeatures(std::vector<std::string>& features) const {
    for (const auto& entry : registry_) {
        features.push_back(entry.first);
    }
}

void VekFrameHub::resetFrame() {
    state_ = SearchMagic;
    rawDataLength_ = 0;
    frameStart_ = kNoFrame;
    frameEnd_ = 0;
}

void VekFrameHub::feed(const char* data, uint32_t size) {
    if (data == nullptr || size == 0) {
        vekReport(log_, 1, "Invalid param, data=%p, size=%u.\n", static_cast<const void*>(data),
                  size);
        return;
    }
    if (!makeRoom(size)) {
        return;
    }
    droppedLast_ = false;
    std::memcpy(cache_ + cachedLength_, data, size);
    Scan scan{cachedLength_, cachedLength_ + size, 0};
    cachedLength_ += size;

    bool more = true;
    while (more) {
        switch (state_) {
            case SearchMagic:
                more = searchMagic(scan);
                break;
            case ReadHeader:
                more = readHeader(scan);
                break;
            case ParseHeader:
                more = parseHeader(scan);
                break;
            case ReadRawData:
                more = readRawData(scan);
                break;
            case FrameComplete:
                more = completeFrame(scan);
                break;
        }
    }
    compact(scan);
}

// A chunk that does not fit is reported and dropped whole while what is cached can
// still become a frame that ends inside the cache: state, cached bytes and the frame in
// progress stay as they were, so that a later chunk that fits completes the frame.
// What is cached is given up (back to SearchMagic, and the chunk taken as the start of a
// fresh search) only when it can never complete: the cache is full, it holds no frame
// in progress (stray bytes only), the frame's raw data cannot end inside the cache, or
// the chunk before was dropped too, so that traffic that never fits the room left
// cannot keep the link deaf for good.
bool VekFrameHub::makeRoom(uint32_t size) {
    if (static_cast<uint64_t>(cachedLength_) + size <= kCacheSize) {
        return true;
    }
    vekReport(log_, 1, "There is not enough buffer to cache data(%u < %u + %u).\n", kCacheSize,
              cachedLength_, size);
    if (!droppedLast_ && canStillComplete()) {
        droppedLast_ = true;
        return false;
    }
    droppedLast_ = false;
    cachedLength_ = 0;
    resetFrame();
    return size <= kCacheSize;
}

bool VekFrameHub::canStillComplete() const {
    if (cachedLength_ >= kCacheSize) {
        return false;
    }
    switch (state_) {
        case ReadHeader:
            return true;
        case ReadRawData:
            return static_cast<uint64_t>(cachedLength_) + static_cast<uint32_t>(rawDataLength_) <=
                   kCacheSize;
        default:
            return false;
    }
}

bool VekFrameHub::searchMagic(Scan& scan) {
    // One byte back finds an "A" that ended the previous chunk, but never inside a
    // frame already consumed.
    uint32_t p = std::max(scan.cur > 0 ? scan.cur - 1 : 0, scan.consumed);
    while (p + 1 < scan.end && !(cache_[p] == 'A' && cache_[p + 1] == 'S')) {
        ++p;
    }
    if (p + 1 >= scan.end) {
        return false;
    }
    frameStart_ = static_cast<int32_t>(p);
    state_ = ReadHeader;
    scan.cur = p + 1;
    return true;
}

bool VekFrameHub::readHeader(Scan& scan) {
    const void* lf = std::memchr(cache_ + scan.cur, '\n', scan.end - scan.cur);
    if (lf == nullptr) {
        scan.cur = scan.end;
        return false;
    }
    scan.cur = static_cast<uint32_t>(static_cast<const char*>(lf) - cache_) + 1;
    state_ = ParseHeader;
    return true;
}

bool VekFrameHub::parseHeader(Scan& scan) {
    cutHeader(scan.cur - 1);
    if (!readLength()) {
        vekReport(log_, 1, "Drop frame with invalid header(%.*s).\n",
                  static_cast<int>(scan.cur - 1 - static_cast<uint32_t>(frameStart_)),
                  cache_ + frameStart_);
        scan.consumed = scan.cur;
        resetFrame();
        return true;
    }
    vekReport(log_, 5, "rawDataLength:%d\n", rawDataLength_);
    state_ = rawDataLength_ > 0 ? ReadRawData : FrameComplete;
    return true;
}

bool VekFrameHub::readRawData(Scan& scan) {
    const uint32_t available = scan.end - scan.cur;
    if (available < static_cast<uint32_t>(rawDataLength_)) {
        rawDataLength_ -= static_cast<int32_t>(available);
        scan.cur = scan.end;
        return false;
    }
    scan.cur += static_cast<uint32_t>(rawDataLength_);
    state_ = FrameComplete;
    return true;
}

bool VekFrameHub::completeFrame(Scan& scan) {
    frameEnd_ = scan.cur;
    vekReport(log_, 4, "\n+RECV-%.*s-RECV\n\n",
              static_cast<int>(frameEnd_ - static_cast<uint32_t>(frameStart_)),
              cache_ + frameStart_);
    dispatch();
    scan.consumed = frameEnd_;
    resetFrame();
    return true;
}

void VekFrameHub::compact(const Scan& scan) {
    if (scan.consumed == 0) {
        return;
    }
    cachedLength_ -= scan.consumed;
    std::memmove(cache_, cache_ + scan.consumed, cachedLength_);
    if (frameStart_ != kNoFrame) {
        frameStart_ -= static_cast<int32_t>(scan.consumed);
    }
}

void VekFrameHub::cutHeader(uint32_t lfAbsolute) {
    VekHeaderLine::cut(cache_ + frameStart_, static_cast<int32_t>(lfAbsolute) - frameStart_,
                       headerFields_, payloadFields_, rawOffset_);
}

bool VekFrameHub::readLength() {
    return VekHeaderLine::readLength(headerFields_, rawDataLength_);
}

void VekFrameHub::dispatch() {
    const auto found = registry_.find(headerFields_[2]);
    if (found == registry_.end() || found->second == nullptr) {
        return;
    }
    frame_.str(std::string(cache_ + frameStart_, frameEnd_ - static_cast<uint32_t>(frameStart_)));
    frame_.clear();
    found->second->decode(headerFields_, payloadFields_, frame_, rawOffset_);
}

}  // namespace vekprotocol
