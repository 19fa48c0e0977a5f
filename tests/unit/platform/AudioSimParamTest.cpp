#include <cstdint>
#include <string>
#include <vector>

#include "PlatformTestSupport.h"

namespace {

// Buffer sizes and records as the daemon's adapters build them.
constexpr size_t kLayoutBuffer = 1036, kBandBuffer = 6796, kHfeBuffer = 148, kVbBuffer = 508;
constexpr uint8_t kSentinel = 0xAA;

std::vector<uint8_t> layout(const std::vector<uint32_t>& masks,
                            const std::vector<int32_t>& counts) {
    std::vector<uint8_t> b = Le::oneRecord(kLayoutBuffer, 0, 1008);
    for (size_t i = 0; i < 6; ++i) {
        Le::put32(b, 8 + 168 * i, masks[i]);
        Le::put32(b, 12 + 168 * i, static_cast<uint32_t>(counts[i]));
    }
    return b;
}

std::vector<uint8_t> band(uint32_t mask, uint32_t bandIndex, const AudioSim::EqBand& v) {
    std::vector<uint8_t> b = Le::oneRecord(kBandBuffer, 1, 1128);
    Le::put32(b, 8, mask);
    Le::put32(b, 12, 1);
    Le::put32(b, 16, bandIndex);
    Le::put32(b, 20, static_cast<uint32_t>(v.value1));
    b[24] = static_cast<uint8_t>(v.value2);
    b[25] = static_cast<uint8_t>(v.value2 >> 8);
    Le::putF(b, 28, v.value3);
    Le::putF(b, 32, v.value4);
    Le::put32(b, 36, static_cast<uint32_t>(v.value5));
    Le::put32(b, 40, static_cast<uint32_t>(v.value6));
    return b;
}

std::vector<uint8_t> hfe(uint32_t mask, uint32_t f1, uint32_t f2, uint32_t f3, float value) {
    std::vector<uint8_t> b = Le::oneRecord(kHfeBuffer, 0, 20);
    Le::put32(b, 8, mask);
    Le::put32(b, 12, f1);
    Le::put32(b, 16, f2);
    Le::put32(b, 20, f3);
    Le::putF(b, 24, value);
    return b;
}

// Marks the bytes after the records, which an answer must leave alone.
void fillTail(std::vector<uint8_t>& b) {
    for (size_t i = 4 + Le::get32(b, 0); i < b.size(); ++i) b[i] = kSentinel;
}

bool tailIntact(const std::vector<uint8_t>& b, size_t from) {
    for (size_t i = from; i < b.size(); ++i) {
        if (b[i] != kSentinel) return false;
    }
    return true;
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
    EXPECT_EQ(AudioSim::eqBandCount(4), 5);
    EXPECT_EQ(AudioSim::eqBandCount(16), 3);

    // Queried in another order, each entry answers its own mask.
    std::vector<uint8_t> q = layout({32, 16, 8, 4, 2, 64}, {9, 9, 9, 9, 9, 9});
    fillTail(q);
    ASSERT_EQ(get("equalizer", q), 0);
    EXPECT_EQ(Le::get32(q, 0), 1012u);
    EXPECT_EQ(Le::get16(q, 4), 0);
    EXPECT_EQ(Le::get16(q, 6), 1008);
    const uint32_t masks[] = {32, 16, 8, 4, 2, 64};
    const int32_t counts[] = {0, 3, 5, 5, 10, 0};
    for (size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(Le::get32(q, 8 + 168 * i), masks[i]) << i;
        EXPECT_EQ(static_cast<int32_t>(Le::get32(q, 12 + 168 * i)), counts[i]) << i;
    }
    EXPECT_TRUE(tailIntact(q, 1016)) << "nothing past the record is written";
}

TEST_F(SimTest, BandEntriesAreStoredPerMaskAndBand) {
    const AudioSim::EqBand rs3{2, 1000, -3.5f, 0.707f, 0, 1};
    const AudioSim::EqBand rs4{7, 65535, 1.0f, 2.0f, -3, 4};
    const AudioSim::EqBand lf3{-1, 1, 0.5f, 0.25f, 5, 6};
    ASSERT_EQ(set("equalizer", band(8, 3, rs3)), 0);
    ASSERT_EQ(set("equalizer", band(8, 4, rs4)), 0);
    ASSERT_EQ(set("equalizer", band(1, 3, lf3)), 0);
    EXPECT_EQ(AudioSim::eqBand(8, 3), rs3);
    EXPECT_EQ(AudioSim::eqBand(1, 3), lf3);

    struct Case {
        uint32_t mask, band;
        AudioSim::EqBand expected;
    };
    const Case cases[] = {{8, 3, rs3}, {8, 4, rs4}, {1, 3, lf3},
                          {8, 5, {}},  {2, 3, {}},  {8, 45, {}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "mask " << c.mask << " band " << c.band);
        std::vector<uint8_t> q = band(c.mask, c.band, {});
        fillTail(q);
        ASSERT_EQ(get("equalizer", q), 0);
        EXPECT_EQ(q, [&] {
            std::vector<uint8_t> e = band(c.mask, c.band, c.expected);
            fillTail(e);
            return e;
        }());
    }
}

TEST_F(SimTest, BandRecordsWithSeveralEntriesStoreEach) {
    std::vector<uint8_t> b = band(16, 0, {1, 0, 0, 0, 0, 0});
    Le::put32(b, 12, 2);            // entryCount 2
    Le::put32(b, 16 + 28, 7);       // second entry: band 7
    Le::put32(b, 16 + 28 + 4, 70);  // value1 70
    Le::put32(b, 16 + 2 * 28, 9);   // a third entry beyond entryCount
    ASSERT_EQ(set("equalizer", b), 0);
    EXPECT_EQ(AudioSim::eqBand(16, 0).value1, 1);
    EXPECT_EQ(AudioSim::eqBand(16, 7).value1, 70);
    EXPECT_TRUE(AudioSim::eqBand(16, 9) == AudioSim::EqBand{});

    std::vector<uint8_t> q = band(16, 7, {});
    Le::put32(q, 12, 2);
    Le::put32(q, 16 + 28, 0);
    ASSERT_EQ(get("equalizer", q), 0);
    EXPECT_EQ(Le::get32(q, 12), 2u);
    EXPECT_EQ(Le::get32(q, 20), 70u);
    EXPECT_EQ(Le::get32(q, 16 + 28 + 4), 1u);
}

TEST_F(SimTest, MaskedRecordsAreStoredPerEffectAndMask) {
    ASSERT_EQ(set("hfe", hfe(8, 1, 0, 1, 2.5f)), 0);
    ASSERT_EQ(set("hfe", hfe(8, 1, 1, 1, 3.5f)), 0);  // replaces
    ASSERT_EQ(set("hfe", hfe(32, 0, 7, 1, 0.5f)), 0);

    std::vector<uint8_t> q = hfe(8, 0, 0, 0, 0);
    fillTail(q);
    ASSERT_EQ(get("hfe", q), 0);
    std::vector<uint8_t> expected = hfe(8, 1, 1, 1, 3.5f);
    fillTail(expected);
    EXPECT_EQ(q, expected);

    q = hfe(4, 9, 9, 9, 9);
    ASSERT_EQ(get("hfe", q), 0);
    EXPECT_EQ(q, hfe(4, 0, 0, 0, 0)) << "never set: zeros, still one record";
    const std::vector<uint8_t> l1 = hfe(32, 0, 7, 1, 0.5f);
    EXPECT_EQ(AudioSim::effectRecord("hfe", 32),
              std::vector<uint8_t>(l1.begin() + 8, l1.begin() + 28))
        << "the body as set";

    // vb keeps its own records; the 80-byte body comes back whole.
    std::vector<uint8_t> vb = Le::oneRecord(kVbBuffer, 0, 80);
    Le::put32(vb, 8, 8);
    for (size_t i = 12; i < 88; ++i) vb[i] = static_cast<uint8_t>(i);
    ASSERT_EQ(set("vb", vb), 0);
    std::vector<uint8_t> vq = Le::oneRecord(kVbBuffer, 0, 80);
    Le::put32(vq, 8, 8);
    fillTail(vq);
    ASSERT_EQ(get("vb", vq), 0);
    fillTail(vb);
    EXPECT_EQ(vq, vb);
    q = hfe(16, 0, 0, 0, 0);
    ASSERT_EQ(get("hfe", q), 0);
    EXPECT_EQ(q, hfe(16, 0, 0, 0, 0)) << "vb's mask 8 is not hfe's";
}

TEST_F(SimTest, ControlInterfaceParamsReadBackThroughTheLibrary) {
    AudioSim::setEqBandCount(2, 12);
    AudioSim::setEqBand(4, 1, {3, 4, 5.5f, 6.5f, 7, 8});
    std::vector<uint8_t> body(20, 0);
    body[4] = 1;
    AudioSim::setEffectRecord("hfe", 16, body);

    std::vector<uint8_t> q = layout({1, 2, 4, 8, 16, 32}, {0, 0, 0, 0, 0, 0});
    ASSERT_EQ(get("equalizer", q), 0);
    EXPECT_EQ(Le::get32(q, 12 + 168), 12u);
    q = band(4, 1, {});
    ASSERT_EQ(get("equalizer", q), 0);
    EXPECT_EQ(q, band(4, 1, {3, 4, 5.5f, 6.5f, 7, 8}));
    q = hfe(16, 0, 0, 0, 0);
    ASSERT_EQ(get("hfe", q), 0);
    EXPECT_EQ(q, hfe(16, 1, 0, 0, 0));
}

TEST_F(SimTest, EveryRecordOfASetBufferIsStored) {
    std::vector<uint8_t> image =
        AudioSim::paramBuffer({{0, std::vector<uint8_t>(20, 0)}, {0, std::vector<uint8_t>(20, 0)}});
    image[8] = 1;  // first body: mask 1, flag1 1
    image[12] = 1;
    image[8 + 24] = 2;  // second body: mask 2, value word 0x05
    image[8 + 24 + 16] = 5;
    image.resize(kHfeBuffer);
    ASSERT_EQ(set("hfe", image), 0);
    EXPECT_EQ(AudioSim::effectRecord("hfe", 1).at(4), 1);
    EXPECT_EQ(AudioSim::effectRecord("hfe", 2).at(16), 5);
}

TEST_F(SimTest, MalformedBuffersAreRefused) {
    struct Case {
        const char* what;
        std::vector<uint8_t> buffer;
        bool refusedBySet;
    };
    std::vector<uint8_t> overrun = hfe(1, 1, 1, 1, 1);
    Le::put32(overrun, 0, 23);  // the record's body ends past totalLength
    std::vector<uint8_t> halfHead = hfe(1, 1, 1, 1, 1);
    Le::put32(halfHead, 0, 26);  // 24 + 2 bytes of a second record head
    std::vector<uint8_t> huge(kBandBuffer, 0);
    Le::put32(huge, 0, 6793);
    const Case cases[] = {
        {"record overruns totalLength", overrun, true},
        {"half a record head", halfHead, true},
        {"totalLength past the largest buffer", huge, true},
        {"no record", std::vector<uint8_t>(kHfeBuffer, 0), false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        std::vector<uint8_t> b = c.buffer;
        EXPECT_EQ(set("hfe", b), c.refusedBySet ? -22 : 0);
        EXPECT_EQ(get("hfe", b), -22);
        EXPECT_EQ(b, c.buffer) << "a refused query is left as it came";
    }
    EXPECT_TRUE(AudioSim::effectRecord("hfe", 1).empty());
}

TEST_F(SimTest, BuffersAreCapturedAsTheyCameIn) {
    const std::vector<uint8_t> setBuffer = hfe(8, 1, 0, 1, 2.5f);
    ASSERT_EQ(set("hfe", setBuffer), 0);
    std::vector<uint8_t> query = hfe(8, 0, 0, 0, 0);
    const std::vector<uint8_t> queryIn = query;
    ASSERT_EQ(get("hfe", query), 0);
    {
        AppHandle app;
        EXPECT_EQ(app->getEffectParam("rearApp", "hfe", query.data()), -2);
    }

    const std::vector<AudioSim::ParamCall> seen = AudioSim::paramCalls();
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[0].operation, "setEffectParam");
    EXPECT_EQ(seen[0].app, "frontApp");
    EXPECT_EQ(seen[0].effect, "hfe");
    EXPECT_EQ(seen[0].bytes, std::vector<uint8_t>(setBuffer.begin(), setBuffer.begin() + 28));
    EXPECT_EQ(seen[1].operation, "getEffectParam");
    EXPECT_EQ(seen[1].bytes, std::vector<uint8_t>(queryIn.begin(), queryIn.begin() + 28));
    EXPECT_EQ(seen[2].app, "rearApp");
    EXPECT_EQ(AudioSim::calls(),
              (std::vector<std::string>{"setEffectParam app=frontApp effect=hfe totalLength=24",
                                        "getEffectParam app=frontApp effect=hfe totalLength=24",
                                        "getEffectParam app=rearApp effect=hfe totalLength=24"}));
    AudioSim::clearCalls();
    EXPECT_TRUE(AudioSim::paramCalls().empty());
    EXPECT_TRUE(AudioSim::calls().empty());
}

TEST_F(SimTest, ScriptedAnswersAreWrittenInOrder) {
    const std::vector<uint8_t> two =
        AudioSim::paramBuffer({{0, std::vector<uint8_t>(20, 1)}, {0, std::vector<uint8_t>(20, 2)}});
    AudioSim::scriptGetEffectParam(0, two);
    AudioSim::scriptGetEffectParam(0, AudioSim::paramBuffer({}));  // totalLength 0
    AudioSim::scriptGetEffectParam(5);                             // status only
    AudioSim::scriptGetEffectParam(6, AudioSim::paramBuffer({{0, std::vector<uint8_t>(20, 3)}}));

    std::vector<uint8_t> q = hfe(8, 0, 0, 0, 0);
    ASSERT_EQ(get("hfe", q), 0);
    EXPECT_EQ(std::vector<uint8_t>(q.begin(), q.begin() + two.size()), two);
    EXPECT_EQ(Le::get32(q, 0), 48u);

    q = hfe(8, 0, 0, 0, 0);
    ASSERT_EQ(get("hfe", q), 0);
    EXPECT_EQ(Le::get32(q, 0), 0u);
    EXPECT_EQ(q[8], 8) << "only the image's 4 bytes are written";

    q = hfe(8, 0, 0, 0, 0);
    EXPECT_EQ(get("hfe", q), 5);
    EXPECT_EQ(q, hfe(8, 0, 0, 0, 0));

    EXPECT_EQ(get("hfe", q), 6);
    EXPECT_EQ(q[8], 3);

    ASSERT_EQ(set("hfe", hfe(8, 1, 1, 1, 1)), 0);
    q = hfe(8, 0, 0, 0, 0);
    ASSERT_EQ(get("hfe", q), 0);
    EXPECT_EQ(q, hfe(8, 1, 1, 1, 1)) << "scripts used up: the stored state answers";
}

TEST_F(SimTest, ScriptedAnswersNeverOverrunTheDaemonsBuffer) {
    struct Case {
        const char* effect;
        std::vector<uint8_t> query;
        size_t capacity;
    };
    const Case cases[] = {
        {"hfe", hfe(1, 0, 0, 0, 0), kHfeBuffer},
        {"vb", Le::oneRecord(kVbBuffer, 0, 80), kVbBuffer},
        {"equalizer", layout({1, 2, 4, 8, 16, 32}, {0, 0, 0, 0, 0, 0}), kLayoutBuffer},
        {"equalizer", band(1, 0, {}), kBandBuffer}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.capacity);
        std::vector<uint8_t> fits(c.capacity, 0x11), tooBig(c.capacity + 1, 0x22);
        AudioSim::scriptGetEffectParam(0, fits);
        AudioSim::scriptGetEffectParam(0, tooBig);
        std::vector<uint8_t> q = c.query;
        ASSERT_EQ(get(c.effect, q), 0);
        EXPECT_EQ(q, fits);
        q = c.query;
        testing::internal::CaptureStderr();
        EXPECT_EQ(get(c.effect, q), -22);
        EXPECT_NE(testing::internal::GetCapturedStderr().find("does not fit"), std::string::npos);
        EXPECT_EQ(q, c.query);
    }
}

}  // namespace
