#include "VekCableModel.h"

#include <algorithm>

namespace vekcable {

namespace {

constexpr int64_t kNsPerSecond = 1000000000;
constexpr int64_t kBitsPerByte = 10;  // start bit, eight data bits, stop bit

}  // namespace

void VekCableModel::push(int64_t now, const char* data, size_t size) {
    for (size_t i = 0; i < size; ++i) {
        Byte byte{now, bytesIn_++, data[i]};
        if (settings_.baud > 0) {
            // Whole nanoseconds from the stream's start, so the rounding does not add up.
            const int64_t start = std::max(now, wireFree_);
            wireFree_ = start + kBitsPerByte * kNsPerSecond / settings_.baud;
            byte.arrives = wireFree_;
        }
        if (hit(byte)) {
            wire_.push_back(byte);
        }
    }
}

bool VekCableModel::hit(Byte& byte) {
    while (!faults_.empty() && faults_.front().count == 0) {
        faults_.pop_front();
    }
    if (faults_.empty() || byte.index < faults_.front().from) {
        return true;
    }
    Pending& fault = faults_.front();
    --fault.count;
    if (fault.kind == Fault::Drop) {
        ++dropped_;
        return false;
    }
    // xorshift: cheap and the same every run
    noise_ ^= noise_ << 13;
    noise_ ^= noise_ >> 17;
    noise_ ^= noise_ << 5;
    const char value = static_cast<char>(noise_ & 0xFF);
    byte.value = value != byte.value ? value : static_cast<char>(~value);
    ++noisy_;
    return true;
}

int64_t VekCableModel::due() const {
    if (wire_.empty()) {
        return -1;
    }
    const int64_t first = wire_.front().arrives;
    if (settings_.latencyMs <= 0) {
        return first;
    }
    const int64_t timer = first + settings_.latencyMs * kNsPerMs;
    if (wire_.size() >= settings_.packet) {
        return std::min(timer, wire_[settings_.packet - 1].arrives);
    }
    return timer;
}

void VekCableModel::take(int64_t now, std::string& out) {
    for (int64_t when = due(); when >= 0 && when <= now; when = due()) {
        // A plain UART hands over every byte that is off the wire; a bridge one packet.
        const size_t limit = settings_.latencyMs <= 0 ? wire_.size() : settings_.packet;
        size_t n = 0;
        while (n < wire_.size() && n < limit && wire_[n].arrives <= when) {
            out.push_back(wire_[n].value);
            ++n;
        }
        wire_.erase(wire_.begin(), wire_.begin() + static_cast<std::ptrdiff_t>(n));
        bytesOut_ += n;
        ++packets_;
    }
}

int64_t VekCableModel::next() const { return due(); }

void VekCableModel::fault(int64_t now, Fault kind, size_t count) {
    // The first byte still on the wire at now, or the next one written.
    uint64_t from = bytesIn_;
    for (const Byte& byte : wire_) {
        if (byte.arrives >= now) {
            from = byte.index;
            break;
        }
    }
    faultAt(from, kind, count);
}

void VekCableModel::faultAt(uint64_t byte, Fault kind, size_t count) {
    faults_.push_back({byte, kind, count});
    std::stable_sort(faults_.begin(), faults_.end(),
                     [](const Pending& a, const Pending& b) { return a.from < b.from; });
    // Bytes already under way that the fault reaches.
    std::deque<Byte> kept;
    for (Byte& b : wire_) {
        if (b.index < byte || hit(b)) {
            kept.push_back(b);
        }
    }
    wire_.swap(kept);
}

void VekCableModel::clear() {
    wire_.clear();
    wireFree_ = 0;
}

}  // namespace vekcable
