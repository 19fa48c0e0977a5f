#include "VekTraceRing.h"

#include "VekPcapng.h"

namespace vekmaster {

void VekTraceRing::record(const std::string& path, const VekTracePacket& packet) {
    std::lock_guard<std::mutex> lock(mutex_);
    path_ = path;
    packets_.push_back(packet);
    packets_.back().line = 0;
    bytes_ += packet.bytes.size();
    while (bytes_ > limit_ && packets_.size() > 1) {
        bytes_ -= packets_.front().bytes.size();
        packets_.pop_front();
        ++dropped_;
    }
}

std::string VekTraceRing::pcapng() const {
    std::lock_guard<std::mutex> lock(mutex_);
    std::string out = VekPcapng::sectionHeader() + VekPcapng::interfaceDescription(path_);
    for (const VekTracePacket& packet : packets_) {
        out += VekPcapng::packet(packet);
    }
    return out;
}

size_t VekTraceRing::dropped() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return dropped_;
}

}  // namespace vekmaster
