#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "VekLe.h"

// Expected parameter-buffer bytes: zeros of a given size with little-endian fields
// put at explicit offsets, so a test states the layout it expects position by position.
class ParamImage {
public:
    explicit ParamImage(size_t size) : bytes(size, 0) {}

    // at() on a field's last byte keeps a wrong offset from writing past the image.
    ParamImage& u16(size_t at, uint16_t v) {
        vekserver::VekLe::putU16(&bytes.at(at + 1) - 1, v);
        return *this;
    }
    ParamImage& u32(size_t at, uint32_t v) {
        vekserver::VekLe::putU32(&bytes.at(at + 3) - 3, v);
        return *this;
    }
    ParamImage& f32(size_t at, float v) {
        vekserver::VekLe::putF32(&bytes.at(at + 3) - 3, v);
        return *this;
    }

    std::vector<uint8_t> bytes;
};
