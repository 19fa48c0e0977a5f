#include "VekParamBuffer.h"

#include <cstring>

namespace vekserver {

VekParamBuffer::VekParamBuffer(uint8_t* storage, uint32_t capacity)
    : data_(storage), capacity_(capacity) {
    std::memset(data_, 0, capacity_);
}

uint8_t* VekParamBuffer::append(uint16_t paramId, uint16_t paramSize) {
    const uint32_t total = totalLength();
    const uint64_t at = kHeadSize + static_cast<uint64_t>(total);
    if (at + kRecordHeadSize + paramSize > capacity_) {
        return nullptr;
    }
    uint8_t* record = data_ + at;
    VekLe::putU16(record, paramId);
    VekLe::putU16(record + 2, paramSize);
    std::memset(record + kRecordHeadSize, 0, paramSize);
    VekLe::putU32(data_, total + kRecordHeadSize + paramSize);
    return record + kRecordHeadSize;
}

}  // namespace vekserver
