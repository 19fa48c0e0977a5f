#pragma once

#include <cstdint>

#include "VekLe.h"

namespace vekserver {

// A view of an effect parameter buffer: u32 totalLength, then records of
// u16 paramId, u16 paramSize and the body. The storage belongs to the caller.
class VekParamBuffer {
public:
    static constexpr uint32_t kHeadSize = 4;
    static constexpr uint32_t kRecordHeadSize = 4;

    // Zero-fills the storage: totalLength 0, no records.
    VekParamBuffer(uint8_t* storage, uint32_t capacity);

    uint8_t* data() { return data_; }
    uint32_t totalLength() const { return VekLe::getU32(data_); }

    // Appends a record; returns its body (zeroed) for the caller to fill, or null
    // when it does not fit.
    uint8_t* append(uint16_t paramId, uint16_t paramSize);

    // Calls visit(body, paramSize) for each record the library left, never reading
    // past the storage.
    template <class Visit>
    void forEachRecord(Visit&& visit) const {
        const uint64_t end = kHeadSize + static_cast<uint64_t>(totalLength());
        uint64_t at = kHeadSize;
        while (at < end && at + kRecordHeadSize <= capacity_) {
            const uint16_t size = VekLe::getU16(data_ + at + 2);
            const uint64_t bodyEnd = at + kRecordHeadSize + size;
            if (bodyEnd > capacity_) {
                return;
            }
            visit(static_cast<const uint8_t*>(data_ + at + kRecordHeadSize), size);
            at = bodyEnd;
        }
    }

private:
    uint8_t* data_;
    uint32_t capacity_;
};

}  // namespace vekserver
