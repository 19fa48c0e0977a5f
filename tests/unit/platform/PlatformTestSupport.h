#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "AudioSim.h"
#include "DVAudioSetting.h"

// Every test starts from the simulator's defaults.
class SimTest : public ::testing::Test {
protected:
    void SetUp() override { AudioSim::reset(); }
    void TearDown() override { EXPECT_EQ(AudioSim::liveObjects(), 0) << "a test leaked objects"; }
};

// Little-endian helpers and buffers the size the daemon uses.
class Le {
public:
    static void put32(std::vector<uint8_t>& b, size_t at, uint32_t v) {
        for (int i = 0; i < 4; ++i) b[at + i] = static_cast<uint8_t>(v >> (8 * i));
    }
    static void putF(std::vector<uint8_t>& b, size_t at, float f) {
        uint32_t v;
        std::memcpy(&v, &f, 4);
        put32(b, at, v);
    }
    static uint32_t get32(const std::vector<uint8_t>& b, size_t at) {
        uint32_t v = 0;
        for (int i = 0; i < 4; ++i) v |= static_cast<uint32_t>(b[at + i]) << (8 * i);
        return v;
    }
    static uint16_t get16(const std::vector<uint8_t>& b, size_t at) {
        return static_cast<uint16_t>(b[at] | b[at + 1] << 8);
    }
    static float getF(const std::vector<uint8_t>& b, size_t at) {
        const uint32_t v = get32(b, at);
        float f;
        std::memcpy(&f, &v, 4);
        return f;
    }
    // A zeroed buffer of capacity bytes holding one record with a zeroed body.
    static std::vector<uint8_t> oneRecord(size_t capacity, uint16_t paramId, uint16_t size) {
        std::vector<uint8_t> b(capacity, 0);
        put32(b, 0, 4u + size);
        b[4] = static_cast<uint8_t>(paramId);
        b[5] = static_cast<uint8_t>(paramId >> 8);
        b[6] = static_cast<uint8_t>(size);
        b[7] = static_cast<uint8_t>(size >> 8);
        return b;
    }
};

// An App for one test, destroyed at scope end.
struct AppHandle {
    audio::DVAudioSetting::App* app = audio::DVAudioSetting::createApp();
    ~AppHandle() { audio::DVAudioSetting::destroy(app); }
    audio::DVAudioSetting::App* operator->() const { return app; }
};
