#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "VekFrameHub.h"

using namespace vekprotocol;

namespace {

struct Received {
    VekFields header;
    VekFields payload;
    std::string frame;
    uint32_t rawOffset;
};

class RecordingEndpoint : public VekSerDes {
public:
    void decode(const VekFields& header, const VekFields& payload, std::stringstream& frame,
                uint32_t rawOffset) override {
        frames.push_back({header, payload, frame.str(), rawOffset});
    }
    std::vector<Received> frames;
};

class RecordingSink : public VekLogCallbackItf {
public:
    explicit RecordingSink(int32_t lvl) { level = lvl; }
    void onLog(const char* text) override { lines.emplace_back(text); }
    std::string all() const {
        std::string s;
        for (const auto& l : lines) s += l;
        return s;
    }
    std::vector<std::string> lines;
};

class FrameHubTest : public ::testing::Test {
protected:
    FrameHubTest() : sink(4), hub(std::make_unique<VekFrameHub>(&common, &sink)) {
        hub->registerEndpoint("Gain", &gain);
    }
    void feed(const std::string& bytes) {
        hub->feed(bytes.data(), static_cast<uint32_t>(bytes.size()));
    }

    RecordingEndpoint common;
    RecordingEndpoint gain;
    RecordingSink sink;
    std::unique_ptr<VekFrameHub> hub;
};

const std::string kVersion = "AS:1:0:Common:VersionRequest:0:OK:<M1.0>:\n";

TEST_F(FrameHubTest, FrameFedOneByteAtATimeIsDispatchedOnceAtItsLineFeed) {
    for (size_t i = 0; i < kVersion.size(); ++i) {
        EXPECT_TRUE(common.frames.empty()) << "dispatched early at byte " << i;
        feed(kVersion.substr(i, 1));
    }
    ASSERT_EQ(common.frames.size(), 1u);
    EXPECT_EQ(common.frames[0].header,
              (VekFields{"1", "0", "Common", "VersionRequest", "0", "OK"}));
    EXPECT_EQ(common.frames[0].payload, (VekFields{"M1.0"}));
    EXPECT_EQ(common.frames[0].frame, kVersion);
    EXPECT_EQ(common.frames[0].rawOffset, kVersion.size());
    EXPECT_EQ(hub->cachedLength(), 0u);
}

TEST_F(FrameHubTest, TwoFramesInOneChunkAreDispatchedInOrder) {
    feed("AS:1:0:Gain:GetMasterRequest:0:OK:\nAS:2:0:Common:FeatureRequest:0:OK:\n");
    ASSERT_EQ(gain.frames.size(), 1u);
    ASSERT_EQ(common.frames.size(), 1u);
    EXPECT_EQ(gain.frames[0].header[0], "1");
    EXPECT_EQ(common.frames[0].header[0], "2");
    EXPECT_TRUE(common.frames[0].payload.empty());
    EXPECT_EQ(hub->cachedLength(), 0u);
}

TEST_F(FrameHubTest, MagicSplitAcrossChunksAndNoiseBeforeItAreHandled) {
    feed("xyAS:1:0:Commo");
    EXPECT_EQ(hub->state(), VekFrameHub::ReadHeader);
    EXPECT_EQ(hub->cachedLength(), 14u);
    feed("n:VersionRequest:0:OK:\nnoise A");
    ASSERT_EQ(common.frames.size(), 1u);
    EXPECT_EQ(common.frames[0].frame, "AS:1:0:Common:VersionRequest:0:OK:\n");
    // The "A" of the noise waits for its "S".
    feed("S:2:0:Common:FeatureRequest:0:OK:\n");
    ASSERT_EQ(common.frames.size(), 2u);
    EXPECT_EQ(common.frames[1].header[3], "FeatureRequest");
    EXPECT_EQ(hub->cachedLength(), 0u);
}

TEST_F(FrameHubTest, RawDataIsCollectedAcrossChunksAndMayHoldMagicAndZeroBytes) {
    const std::string raw("AS\0\nxy", 6);
    feed("AS:4:0:Common:FileContentResponse:6:OK:</a>:\n" + raw.substr(0, 3));
    EXPECT_EQ(hub->state(), VekFrameHub::ReadRawData);
    feed(raw.substr(3) + "AS:5:0:Common:FeatureRequest:0:OK:\n");
    ASSERT_EQ(common.frames.size(), 2u);
    const Received& f = common.frames[0];
    EXPECT_EQ(f.frame.substr(f.rawOffset), raw);
    EXPECT_EQ(common.frames[1].header[0], "5");
    // The dump stops at the zero byte of the raw data.
    EXPECT_EQ(sink.lines[0], "\n+RECV-AS:4:0:Common:FileContentResponse:6:OK:</a>:\nAS-RECV\n\n");
}

TEST_F(FrameHubTest, ZeroAndNegativeLengthsCompleteAtTheLineFeed) {
    feed("AS:1:0:Common:A:0:OK:\nAS:2:0:Common:B:-5:OK:\nAS:3:0:Common:C:+0:OK:\n");
    ASSERT_EQ(common.frames.size(), 3u);
    EXPECT_EQ(common.frames[2].header[3], "C");
}

TEST_F(FrameHubTest, HeaderAndPayloadFieldsAreCut) {
    feed("AS:1:0:Gain:X::OK:<1:2:3>:\n");  // empty length field: not a number
    EXPECT_TRUE(gain.frames.empty());
    feed("AS:1::Gain:SetChannelRequest:0:OK:extra:<1::3>:\n");
    ASSERT_EQ(gain.frames.size(), 1u);
    EXPECT_EQ(gain.frames[0].header,
              (VekFields{"1", "", "Gain", "SetChannelRequest", "0", "OK", "extra"}));
    EXPECT_EQ(gain.frames[0].payload, (VekFields{"1", "", "3"}));
    // A block with angle brackets inside: taken from the first "<" to the last ">".
    feed("AS:2:0:Gain:M:0:OK:<a<b>:c>:\n");
    EXPECT_EQ(gain.frames[1].payload, (VekFields{"a<b>", "c"}));
    // An empty block gives no payload fields.
    feed("AS:3:0:Gain:M:0:OK:<>:\n");
    EXPECT_TRUE(gain.frames[2].payload.empty());
}

TEST_F(FrameHubTest, UnregisteredFeatureIsDroppedSilently) {
    sink.level = 5;
    feed("AS:1:0:Reverb:GetModeRequest:0:OK:\n");
    EXPECT_TRUE(common.frames.empty());
    EXPECT_TRUE(gain.frames.empty());
    EXPECT_EQ(sink.all(), "rawDataLength:0\n\n+RECV-AS:1:0:Reverb:GetModeRequest:0:OK:\n-RECV\n\n");
    EXPECT_EQ(hub->cachedLength(), 0u);
}

TEST_F(FrameHubTest, MalformedHeadersAreDroppedAndTheNextFrameIsServed) {
    const char* bad[] = {
        "AS:1:0:Common:VersionRequest:\n",                // five fields
        "AS\n",                                           // nothing at all
        "AS<:>:\n",                                       // a block before any header
        "AS:1:0:Common:VersionRequest:x:OK:\n",           // length not a number
        "AS:1:0:Common:VersionRequest:2147483648:OK:\n",  // beyond 32 bits
    };
    for (const char* frame : bad) {
        sink.lines.clear();
        feed(frame);
        feed(kVersion);
        ASSERT_EQ(common.frames.size(), 1u) << frame;
        EXPECT_EQ(common.frames[0].frame, kVersion) << frame;
        ASSERT_EQ(sink.lines.size(), 2u) << frame;
        EXPECT_EQ(sink.lines[0].rfind("Drop frame with invalid header(AS", 0), 0u) << frame;
        EXPECT_EQ(hub->cachedLength(), 0u);
        common.frames.clear();
    }
}

TEST_F(FrameHubTest, CacheTakesExactly40960BytesAndRecoversFromOverflow) {
    std::string noise(VekFrameHub::kCacheSize - 1, 'x');
    feed(noise);
    feed("A");
    EXPECT_EQ(hub->cachedLength(), VekFrameHub::kCacheSize);
    EXPECT_TRUE(sink.lines.empty());
    feed("S");
    ASSERT_EQ(sink.lines.size(), 1u);
    EXPECT_EQ(sink.lines[0], "There is not enough buffer to cache data(40960 < 40960 + 1).\n");
    // The stale bytes are gone; the chunk that overflowed starts afresh.
    EXPECT_EQ(hub->cachedLength(), 1u);
    EXPECT_EQ(hub->state(), VekFrameHub::SearchMagic);
    feed(kVersion);
    ASSERT_EQ(common.frames.size(), 1u);
    EXPECT_EQ(common.frames[0].frame, kVersion);
}

TEST_F(FrameHubTest, OversizedFrameIsDiscardedAndLinkKeepsWorking) {
    feed("AS:1:0:Common:FileContentResponse:50000:OK:\n");
    feed(std::string(40000, 'r'));
    EXPECT_EQ(hub->state(), VekFrameHub::ReadRawData);
    feed(std::string(2000, 'r'));
    EXPECT_EQ(hub->state(), VekFrameHub::SearchMagic);
    feed(std::string(VekFrameHub::kCacheSize + 1, 'z'));  // a chunk that never fits
    EXPECT_EQ(hub->cachedLength(), 0u);
    feed(kVersion);
    EXPECT_EQ(common.frames.size(), 1u);
    EXPECT_EQ(sink.lines.size(), 3u);
}

// A VersionRequest whose raw data makes the whole frame exactly 40960 bytes.
std::string fullSizeFrame() {
    const std::string head = "AS:9:0:Common:VersionRequest:40914:OK:<M1.0>:\n";
    return head + std::string(40914, 'v');
}

TEST_F(FrameHubTest, ChunkThatDoesNotFitIsDroppedAndThePartialFrameKept) {
    const std::string frame = fullSizeFrame();
    ASSERT_EQ(frame.size(), VekFrameHub::kCacheSize);
    const std::string next = "AS:9:0:Gain:GetFadeBalanceRequest:0:OK:\n";
    feed(frame.substr(0, 40900));
    feed(frame.substr(40900) + next);
    ASSERT_EQ(sink.lines.size(), 1u);
    EXPECT_EQ(sink.lines[0], "There is not enough buffer to cache data(40960 < 40900 + 100).\n");
    EXPECT_TRUE(common.frames.empty());
    EXPECT_TRUE(gain.frames.empty()) << "nothing of the dropped chunk is dispatched";
    EXPECT_EQ(hub->cachedLength(), 40900u);
    EXPECT_EQ(hub->state(), VekFrameHub::ReadRawData);
    EXPECT_EQ(hub->rawDataLength(), 60);

    // The missing bytes make the cache exactly full: taken, and the frame completes.
    feed(frame.substr(40900));
    ASSERT_EQ(common.frames.size(), 1u);
    EXPECT_EQ(common.frames[0].frame, frame);
    EXPECT_EQ(hub->cachedLength(), 0u);
    feed(next);
    EXPECT_EQ(gain.frames.size(), 1u);
}

TEST_F(FrameHubTest, SecondChunkInARowThatDoesNotFitGivesTheFrameUp) {
    const std::string frame = fullSizeFrame();
    const std::string next = "AS:9:0:Gain:GetFadeBalanceRequest:0:OK:\n";
    feed(frame.substr(0, 40950));
    feed(std::string(20, 'x'));
    EXPECT_EQ(hub->cachedLength(), 40950u);
    // Traffic that never fits the 10 bytes left must not keep the link deaf.
    feed(next);
    ASSERT_EQ(sink.lines.size(), 3u);
    EXPECT_EQ(sink.lines[1], "There is not enough buffer to cache data(40960 < 40950 + 40).\n");
    EXPECT_EQ(sink.lines[2], "\n+RECV-" + next + "-RECV\n\n");
    ASSERT_EQ(gain.frames.size(), 1u) << "the chunk starts the search afresh";
    EXPECT_TRUE(common.frames.empty());
    EXPECT_EQ(hub->cachedLength(), 0u);
}

TEST_F(FrameHubTest, FrameThatCannotEndInsideTheCacheIsGivenUpAtOnce) {
    // 100 stray bytes ahead of the frame leave too little room for its raw data.
    const std::string frame = fullSizeFrame();
    feed(std::string(100, '#') + frame.substr(0, 40800));
    EXPECT_EQ(hub->state(), VekFrameHub::ReadRawData);
    feed(frame.substr(40800, 100));
    ASSERT_EQ(sink.lines.size(), 1u);
    EXPECT_EQ(hub->state(), VekFrameHub::SearchMagic);
    EXPECT_EQ(hub->cachedLength(), 100u);
    feed(kVersion);
    EXPECT_EQ(common.frames.size(), 1u);

    // A header line that fills the whole cache can never end either.
    sink.lines.clear();
    feed("AS:" + std::string(VekFrameHub::kCacheSize - 3, '1'));
    EXPECT_EQ(hub->state(), VekFrameHub::ReadHeader);
    feed(kVersion);
    ASSERT_EQ(sink.lines.size(), 2u) << "the overflow, then the dump of the request";
    EXPECT_EQ(common.frames.size(), 2u);
}

TEST_F(FrameHubTest, InvalidFeedIsReportedAtLevelOne) {
    hub->feed(nullptr, 3);
    hub->feed("x", 0);
    ASSERT_EQ(sink.lines.size(), 2u);
    EXPECT_EQ(sink.lines[0], "Invalid param, data=(nil), size=3.\n");
    sink.level = 0;
    hub->feed(nullptr, 3);
    EXPECT_EQ(sink.lines.size(), 2u);
}

TEST_F(FrameHubTest, LevelFourShowsDumpButNotLengthAndLongDumpsAreCut) {
    feed(kVersion);
    ASSERT_EQ(sink.lines.size(), 1u);
    EXPECT_EQ(sink.lines[0], "\n+RECV-" + kVersion + "-RECV\n\n");

    sink.lines.clear();
    const std::string raw(30000, 'q');
    feed("AS:1:0:Common:FileContentResponse:30000:OK:\n" + raw);
    ASSERT_EQ(sink.lines.size(), 1u);
    EXPECT_EQ(sink.lines[0].size(), static_cast<size_t>(VekLogCallbackItf::kBufferSize - 1));
    EXPECT_EQ(sink.lines[0].find("-RECV"), std::string::npos);
}

TEST(FrameHubNoSinkTest, WorksSilentlyWithoutSink) {
    RecordingEndpoint common;
    VekFrameHub hub(&common, nullptr);
    hub.feed(nullptr, 0);
    const std::string big(VekFrameHub::kCacheSize, 'x');
    hub.feed(big.data(), 41);
    hub.feed(big.data(), VekFrameHub::kCacheSize);
    hub.feed(kVersion.data(), static_cast<uint32_t>(kVersion.size()));
    EXPECT_EQ(common.frames.size(), 1u);
}

TEST(FrameHubSequenceTest, RunsFromOneTo65535ThenWraps) {
    VekFrameHub hub(nullptr, nullptr);
    for (uint32_t i = 1; i <= 65535; ++i) {
        ASSERT_EQ(hub.nextSequence(), i);
    }
    EXPECT_EQ(hub.nextSequence(), 1u);
}

TEST(FrameHubFeatureTest, ListsFeaturesInByteOrderAndReplacesBindings) {
    RecordingEndpoint a, b;
    VekFrameHub hub(&a, nullptr);
    for (const char* name : {"Vb", "Speaker", "Gain", "EqV2", "Eq", "Reverb", "Hfe"}) {
        hub.registerEndpoint(name, &a);
    }
    hub.registerEndpoint("Gain", &b);
    std::vector<std::string> features{"x"};
    hub.listFeatures(features);
    EXPECT_EQ(features, (std::vector<std::string>{"x", "Common", "Eq", "EqV2", "Gain", "Hfe",
                                                  "Reverb", "Speaker", "Vb"}));
    const std::string frame = "AS:1:0:Gain:M:0:OK:\n";
    hub.feed(frame.data(), static_cast<uint32_t>(frame.size()));
    EXPECT_EQ(b.frames.size(), 1u);
    EXPECT_TRUE(a.frames.empty());
}

}  // namespace
