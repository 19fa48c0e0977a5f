#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "AppHandle.h"
#include "SimTest.h"

namespace {

void put32(std::vector<uint8_t>& b, size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i) b[at + i] = static_cast<uint8_t>(v >> (8 * i));
}

// A buffer of capacity bytes holding one record with a zeroed body; the bytes past the
// record hold 0xAA, which no answer may touch.
std::vector<uint8_t> oneRecord(size_t capacity, uint16_t paramId, uint16_t size) {
    std::vector<uint8_t> b(capacity, 0xAA);
    put32(b, 0, 4u + size);
    put32(b, 4, paramId | static_cast<uint32_t>(size) << 16);
    std::fill(b.begin() + 8, b.begin() + 8 + size, 0);
    return b;
}

// Buffer sizes and records as the daemon's adapters build them.
constexpr size_t kLayoutBuffer = 1036, kBandBuffer = 6796, kHfeBuffer = 148, kVbBuffer = 508;

std::vector<uint8_t> layout(const std::vector<uint32_t>& masks,
                            const std::vector<uint32_t>& counts) {
    std::vector<uint8_t> b = oneRecord(kLayoutBuffer, 0, 1008);
    for (size_t i = 0; i < 6; ++i) {
        put32(b, 8 + 168 * i, masks[i]);
        put32(b, 12 + 168 * i, counts[i]);
    }
    return b;
}

std::vector<uint8_t> band(uint32_t mask, uint32_t bandIndex, const AudioSim::EqBand& v) {
    std::vector<uint8_t> b = oneRecord(kBandBuffer, 1, 1128);
    put32(b, 8, mask);
    put32(b, 12, 1);
    put32(b, 16, bandIndex);
    put32(b, 20, static_cast<uint32_t>(v.value1));
    put32(b, 24, v.value2);
    std::memcpy(&b[28], &v.value3, 4);
    std::memcpy(&b[32], &v.value4, 4);
    put32(b, 36, static_cast<uint32_t>(v.value5));
    put32(b, 40, static_cast<uint32_t>(v.value6));
    return b;
}

// An hfe or vb record: the mask, then fill.
std::vector<uint8_t> masked(const std::string& effect, uint32_t mask, uint8_t fill) {
    const uint16_t size = effect == "hfe" ? 20 : 80;
    std::vector<uint8_t> b = oneRecord(effect == "hfe" ? kHfeBuffer : kVbBuffer, 0, size);
    std::fill(b.begin() + 12, b.begin() + 8 + size, fill);
    put32(b, 8, mask);
    return b;
}

int32_t set(const char* effect, std::vector<uint8_t> b) {
    AppHandle app;
    return app->setEffectParam("frontApp", effect, b.data());
}

int32_t get(const char* effect, std::vector<uint8_t>& b) {
    AppHandle app;
    return app->getEffectParam("frontApp", effect, b.data());
}

TEST_F(SimTest, LayoutBandCountsAreStoredPerMask) {
    ASSERT_EQ(set("equalizer", layout({1, 2, 4, 8, 16, 32}, {10, 10, 5, 5, 3, 0})), 0);
    AudioSim::setEqBandCount(64, 12);
    // Queried in another order, each entry answers its own mask.
    std::vector<uint8_t> q = layout({32, 16, 128, 4, 2, 64}, {9, 9, 9, 9, 9, 9});
    ASSERT_EQ(get("equalizer", q), 0);
    EXPECT_EQ(q, layout({32, 16, 128, 4, 2, 64}, {0, 3, 0, 5, 10, 12}));
}

TEST_F(SimTest, BandEntriesAreStoredPerMaskAndBand) {
    const AudioSim::EqBand rs3{2, 1000, -3.5f, 0.707f, -3, 1}, lf3{-1, 1, 0.5f, 0.25f, 5, 6};
    std::vector<uint8_t> several = band(8, 3, rs3);
    put32(several, 12, 2);  // entryCount 2: band 3, then band 5
    put32(several, 44, 5);
    put32(several, 48, 70);
    put32(several, 72, 6);  // an entry beyond entryCount
    put32(several, 76, 60);
    ASSERT_EQ(set("equalizer", several), 0);
    AudioSim::setEqBand(1, 3, lf3);

    struct Case {
        uint32_t mask, band;
        AudioSim::EqBand expected;
    };
    const Case cases[] = {
        {8, 3, rs3}, {8, 5, {70, 0, 0, 0, 0, 0}}, {1, 3, lf3}, {8, 6, {}}, {2, 3, {}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "mask " << c.mask << " band " << c.band);
        std::vector<uint8_t> q = band(c.mask, c.band, {});
        ASSERT_EQ(get("equalizer", q), 0);
        EXPECT_EQ(q, band(c.mask, c.band, c.expected));
    }
}

TEST_F(SimTest, MaskedRecordsAreStoredPerEffectAndMask) {
    ASSERT_EQ(set("hfe", masked("hfe", 8, 1)), 0);
    AudioSim::setEffectRecord("vb", 4, std::vector<uint8_t>(80, 5));
    struct Case {
        const char* effect;
        uint32_t mask;
        uint8_t fill;
    };
    const Case cases[] = {{"hfe", 8, 1}, {"hfe", 4, 0}, {"vb", 4, 5}, {"vb", 8, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.effect << " mask " << c.mask);
        std::vector<uint8_t> q = masked(c.effect, c.mask, 9);
        ASSERT_EQ(get(c.effect, q), 0);
        EXPECT_EQ(q, masked(c.effect, c.mask, c.fill)) << "zeros where nothing was set";
    }
}

TEST_F(SimTest, ScriptedAnswersAreTakenInOrderAndNeverOverrunTheDaemonsBuffer) {
    ASSERT_EQ(set("hfe", masked("hfe", 8, 3)), 0);
    struct Case {
        const char* effect;
        std::vector<uint8_t> query;
    };
    const Case cases[] = {{"hfe", masked("hfe", 8, 0)},
                          {"vb", masked("vb", 1, 0)},
                          {"equalizer", layout({1, 2, 4, 8, 16, 32}, {0, 0, 0, 0, 0, 0})},
                          {"equalizer", band(1, 0, {})}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.query.size());
        const size_t room = c.query.size();
        const std::vector<uint8_t> part(6, 0x33), fits(room, 0x11), tooBig(room + 1, 0x22);
        AudioSim::scriptGetEffectParam(6, part);
        AudioSim::scriptGetEffectParam(0, fits);
        AudioSim::scriptGetEffectParam(0, tooBig);
        AudioSim::scriptGetEffectParam(5);  // status only
        std::vector<uint8_t> q = c.query, expected = c.query;
        std::copy(part.begin(), part.end(), expected.begin());
        EXPECT_EQ(get(c.effect, q), 6);
        EXPECT_EQ(q, expected) << "the image over the buffer's start, the rest left";
        q = c.query;  // the daemon builds every query afresh
        EXPECT_EQ(get(c.effect, q), 0);
        EXPECT_EQ(q, fits);
        q = c.query;
        testing::internal::CaptureStderr();
        EXPECT_EQ(get(c.effect, q), -22);
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "audiosim: scripted getEffectParam answer of " + std::to_string(room + 1) +
                      " bytes does not fit the " + std::to_string(room) + "-byte " + c.effect +
                      " buffer; not written\n");
        EXPECT_EQ(get(c.effect, q), 5);
        EXPECT_EQ(q, c.query);
    }
    std::vector<uint8_t> q = masked("hfe", 8, 0);
    ASSERT_EQ(get("hfe", q), 0);
    EXPECT_EQ(q, masked("hfe", 8, 3)) << "scripts used up: the stored state answers";
}

}  // namespace
