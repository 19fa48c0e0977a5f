#pragma once

#include <cstdint>
#include <cstring>

// Little-endian access to parameter buffers, independent of the host's byte order.
class SimBytes {
public:
    static uint16_t u16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | p[1] << 8); }
    static uint32_t u32(const uint8_t* p) {
        return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
               static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
    }
    static void putU16(uint8_t* p, uint16_t v) {
        p[0] = static_cast<uint8_t>(v);
        p[1] = static_cast<uint8_t>(v >> 8);
    }
    static void putU32(uint8_t* p, uint32_t v) {
        for (int i = 0; i < 4; ++i) {
            p[i] = static_cast<uint8_t>(v >> (8 * i));
        }
    }
    static float f32(const uint8_t* p) {
        const uint32_t bits = u32(p);
        float v;
        std::memcpy(&v, &bits, sizeof v);
        return v;
    }
    static void putF32(uint8_t* p, float v) {
        uint32_t bits;
        std::memcpy(&bits, &v, sizeof bits);
        putU32(p, bits);
    }
};
