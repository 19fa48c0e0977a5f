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
    if (static_cast<uint64_t>(cachedLength_) + size > kCacheSize) {
        vekReport(log_, 1, "There is not enough buffer to cache data(%u < %u + %u).\n", kCacheSize,
                  cachedLength_, size);
        // Every complete frame has been dispatched by now, so what is cached can never
        // complete: drop it, or noise and oversized frames would wedge the link.
        cachedLength_ = 0;
        resetFrame();
        if (size > kCacheSize) {
            return;
        }
    }
    std::memcpy(cache_ + cachedLength_, data, size);
    uint32_t cur = cachedLength_;
    cachedLength_ += size;
    const uint32_t end = cachedLength_;
    bool consumedAny = false;
    uint32_t consumed = 0;

    bool waiting = false;
    while (!waiting) {
        switch (state_) {
            case SearchMagic: {
                // One byte back finds an "A" that ended the previous chunk, but never
                // inside a frame already dispatched.
                uint32_t p = std::max(cur > 0 ? cur - 1 : 0, consumed);
                while (p + 1 < end && !(cache_[p] == 'A' && cache_[p + 1] == 'S')) {
                    ++p;
                }
                if (p + 1 >= end) {
                    waiting = true;
                    break;
                }
                frameStart_ = static_cast<int32_t>(p);
                state_ = ReadHeader;
                cur = p + 1;
                break;
            }
            case ReadHeader: {
                const void* lf = std::memchr(cache_ + cur, '\n', end - cur);
                if (lf == nullptr) {
                    cur = end;
                    waiting = true;
                    break;
                }
                cur = static_cast<uint32_t>(static_cast<const char*>(lf) - cache_) + 1;
                state_ = ParseHeader;
                break;
            }
            case ParseHeader: {
                cutHeader(cur - 1);
                if (!readLength()) {
                    vekReport(log_, 1, "Drop frame with invalid header(%.*s).\n",
                              static_cast<int>(cur - 1 - static_cast<uint32_t>(frameStart_)),
                              cache_ + frameStart_);
                    consumedAny = true;
                    consumed = cur;
                    resetFrame();
                    break;
                }
                vekReport(log_, 5, "rawDataLength:%d\n", rawDataLength_);
                state_ = rawDataLength_ > 0 ? ReadRawData : FrameComplete;
                break;
            }
            case ReadRawData: {
                const uint32_t available = end - cur;
                if (available < static_cast<uint32_t>(rawDataLength_)) {
                    rawDataLength_ -= static_cast<int32_t>(available);
                    cur = end;
                    waiting = true;
                    break;
                }
                cur += static_cast<uint32_t>(rawDataLength_);
                state_ = FrameComplete;
                break;
            }
            case FrameComplete:
                break;
        }
        if (state_ == FrameComplete) {
            frameEnd_ = cur;
            vekReport(log_, 4, "\n+RECV-%.*s-RECV\n\n",
                      static_cast<int>(frameEnd_ - static_cast<uint32_t>(frameStart_)),
                      cache_ + frameStart_);
            dispatch();
            consumedAny = true;
            consumed = frameEnd_;
            resetFrame();
        }
    }

    if (consumedAny) {
        cachedLength_ -= consumed;
        std::memmove(cache_, cache_ + consumed, cachedLength_);
        if (frameStart_ != kNoFrame) {
            frameStart_ -= static_cast<int32_t>(consumed);
        }
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
