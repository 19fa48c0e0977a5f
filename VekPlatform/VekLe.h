#pragma once

#include <cstdint>
#include <cstring>

namespace vekserver {

// Little-endian fields of library parameter buffers, byte by byte: the buffers are
// not aligned and the layout must not depend on the host's byte order.
class VekLe {
public:
    static void putU16(uint8_t* p, uint16_t v) {
        p[0] = static_cast<uint8_t>(v);
        p[1] = static_cast<uint8_t>(v >> 8);
    }
    static void putU32(uint8_t* p, uint32_t v) {
        for (int i = 0; i < 4; ++i) {
            p[i] = static_cast<uint8_t>(v >> (8 * i));
        }
    }
    static void putI32(uint8_t* p, int32_t v) { putU32(p, static_cast<uint32_t>(v)); }
    static void putF32(uint8_t* p, float v) {
        uint32_t bits = 0;
        std::memcpy(&bits, &v, sizeof(bits));
        putU32(p, bits);
    }
    static uint16_t getU16(const uint8_t* p) {
        return static_cast<uint16_t>(p[0] | (static_cast<uint16_t>(p[1]) << 8));
    }
    static uint32_t getU32(const uint8_t* p) {
        uint32_t v = 0;
        for (int i = 3; i >= 0; --i) {
            v = (v << 8) | p[i];
        }
        return v;
    }
    static int32_t getI32(const uint8_t* p) { return static_cast<int32_t>(getU32(p)); }
    static float getF32(const uint8_t* p) {
        const uint32_t bits = getU32(p);
        float v = 0;
        std::memcpy(&v, &bits, sizeof(v));
        return v;
    }
};

}  // namespace vekserver
