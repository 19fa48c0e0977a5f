#include <gtest/gtest.h>

#include "AudioSim.h"
#include "ChannelTable.h"
#include "VekEffectProbes.h"
#include "VekParamBuffer.h"

using namespace vekserver;

namespace {

TEST(ChannelTableTest, NamesMapToMasksAndUnknownNamesToLf) {
    const std::pair<const char*, uint32_t> cases[] = {
        {"LF", 1},  {"RF", 2}, {"LS", 4}, {"RS", 8},  {"CF", 16},
        {"L1", 32}, {"rs", 1}, {"", 1},   {"LF ", 1}, {"RSX", 1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(channelMask(c.first), c.second) << c.first;
    }
    EXPECT_EQ(channelMask(std::string("RS\0", 3)), 1u);
    EXPECT_STREQ(ChannelTable::at(5).name, "L1");
}

TEST(ParamBufferTest, RecordsAreLittleEndianAndReadBackStaysInside) {
    uint8_t storage[40];
    storage[39] = 0xEE;
    VekParamBuffer buffer(storage, sizeof(storage));
    EXPECT_EQ(storage[39], 0) << "zero-filled";
    uint8_t* body = buffer.append(0x0102, 8);
    ASSERT_NE(body, nullptr);
    VekLe::putF32(body, 2.5f);
    VekLe::putI32(body + 4, -2);
    EXPECT_EQ(buffer.append(1, 25), nullptr) << "does not fit";
    const uint8_t expected[] = {12, 0, 0,    0,    0x02, 0x01, 8,    0,
                                0,  0, 0x20, 0x40, 0xFE, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(std::vector<uint8_t>(storage, storage + 16),
              std::vector<uint8_t>(expected, expected + 16));

    // The library claims more than the storage holds: only whole records inside count.
    VekLe::putU32(storage, 1000);
    VekLe::putU16(storage + 16, 7);
    VekLe::putU16(storage + 18, 30);
    int seen = 0;
    buffer.forEachRecord([&](const uint8_t* b, uint16_t size) {
        ++seen;
        EXPECT_EQ(size, 8);
        EXPECT_EQ(VekLe::getI32(b + 4), -2);
    });
    EXPECT_EQ(seen, 1);
}

class ProbeTest : public ::testing::Test {
protected:
    std::string probeAll(bool& eq, bool& hfe, bool& vb) {
        testing::internal::CaptureStdout();
        eq = probes.isEqSupported();
        hfe = probes.isHfeSupported();
        vb = probes.isVbSupported();
        return testing::internal::GetCapturedStdout();
    }
    VekEffectProbes probes;
};

TEST_F(ProbeTest, PresentEffectsAreSwitchedOnOnceAndTheAnswerIsKept) {
    AudioSim::reset("on=hfe;absent=vb");
    bool eq, hfe, vb;
    EXPECT_EQ(probeAll(eq, hfe, vb), "[AST][ZIP]Success to enable EQ, ret=0.\n");
    EXPECT_TRUE(eq);
    EXPECT_TRUE(hfe);
    EXPECT_FALSE(vb);
    EXPECT_TRUE(AudioSim::effectEnabled("equalizer"));
    EXPECT_EQ(AudioSim::calls(), (std::vector<std::string>{
                                     "getEffectEnable app=frontApp effect=equalizer",
                                     "setEffectEnable app=frontApp effect=equalizer enable=1",
                                     "getEffectEnable app=frontApp effect=hfe",
                                     "getEffectEnable app=frontApp effect=vb",
                                 }));
    AudioSim::clearCalls();
    AudioSim::setEffectPresent("vb", true);
    EXPECT_EQ(probeAll(eq, hfe, vb), "");
    EXPECT_FALSE(vb) << "the first answer stands";
    EXPECT_TRUE(AudioSim::calls().empty());
    EXPECT_EQ(AudioSim::liveObjects(), 0);
}

TEST_F(ProbeTest, FailuresMarkEffectsAbsentOrKeepThemPresent) {
    AudioSim::reset("fail=setEffectEnable:5");
    AudioSim::failOn("getEffectEnable", 3, 2);  // hfe's query fails
    bool eq, hfe, vb;
    EXPECT_EQ(probeAll(eq, hfe, vb),
              "[AST][ZIP]Fail to enable EQ, ret=5.\n[AST][ZIP]Fail to enable Vb, ret=5.\n");
    EXPECT_TRUE(eq);
    EXPECT_FALSE(hfe);
    EXPECT_TRUE(vb);

    probes = VekEffectProbes();
    AudioSim::reset("null=App");
    EXPECT_EQ(probeAll(eq, hfe, vb), "");
    EXPECT_FALSE(eq || hfe || vb);
    EXPECT_EQ(AudioSim::liveObjects(), 0);
}

}  // namespace
