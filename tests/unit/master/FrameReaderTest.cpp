#include <gtest/gtest.h>

#include <string>

#include "VekFrameReader.h"
#include "VekMasterReply.h"
#include "VekReplyDecoder.h"

namespace {

using vekmaster::VekFrameReader;

// Keeps what the reader hands it, and the calls in order.
class RecordingSink : public vekmaster::VekRawSink {
public:
    bool begin(int64_t length) override {
        calls += "begin(" + std::to_string(length) + ")";
        return true;
    }
    bool write(const char* data, size_t size) override {
        bytes.append(data, size);
        return true;
    }
    bool end() override {
        calls += "end";
        return true;
    }
    void abandon() override { calls += "abandon"; }

    std::string calls;
    std::string bytes;
};

class FrameReaderTest : public ::testing::Test {
protected:
    void expect(const std::string& feature, const std::string& message) {
        reply.expect(feature, message);
        reader.await(sink);
    }
    void feedBytewise(const std::string& bytes) {
        for (const char c : bytes) {
            reader.feed(&c, 1);
        }
    }

    vekmaster::VekMasterReply reply;
    vekmaster::VekReplyDecoder decoder{reply};
    VekFrameReader reader{decoder, reply};
    RecordingSink sink;
};

TEST_F(FrameReaderTest, AnAnswerInSingleBytesBehindNoiseStreamsItsRawData) {
    expect("Common", "FileContentResponse");
    const std::string raw("AS:1:0:\n\0x", 10);
    feedBytewise("HELLO!\nA" + std::string("AS:4:0:Common:FileContentResponse:10:OK:</a:b>:\n") +
                 raw);
    EXPECT_TRUE(reader.complete());
    EXPECT_EQ(sink.calls, "begin(10)end");
    EXPECT_EQ(sink.bytes, raw);
    EXPECT_EQ(reply.rawDataLength, 10);
    ASSERT_EQ(reply.fields.size(), 1u);
    EXPECT_EQ(reply.fields[0].parts[0].text, "/a") << "':' separates fields, in a path too";
    EXPECT_TRUE(reply.rawData.empty()) << "raw data goes to the sink only";
}

TEST_F(FrameReaderTest, AnOverlongHeaderIsSkippedAndTheNextFrameRead) {
    expect("Gain", "GetMasterResponse");
    reader.feed("AS:", 3);
    const std::string noise(VekFrameReader::kMaxHeaderLine, 'x');
    reader.feed(noise.data(), noise.size());
    EXPECT_FALSE(reader.inFrame());
    const std::string answer = "\nAS:2:0:Gain:GetMasterResponse:0:OK:<-6>:\n";
    reader.feed(answer.data(), answer.size());
    EXPECT_TRUE(reader.complete());
    EXPECT_EQ(reply.fields[0].parts[0].text, "-6");
}

TEST_F(FrameReaderTest, OnlyTheAwaitedAnswerReachesTheSink) {
    expect("Common", "FileContentResponse");
    // An answer to another request, with raw data that looks like the awaited answer.
    const std::string look = "AS:3:0:Common:FileContentResponse:1:OK:<p>:\nz";
    const std::string other = "AS:1:0:Gain:GetMasterResponse:" + std::to_string(look.size()) +
                              ":OK:<1>:\n" + look;
    reader.feed(other.data(), other.size());
    EXPECT_FALSE(reader.complete());
    EXPECT_EQ(sink.calls, "");

    const std::string cut = "AS:6:0:Common:FileContentResponse:4:OK:<p>:\nab";
    reader.feed(cut.data(), cut.size());
    EXPECT_FALSE(reader.complete());
    // Given up on: the rest of its bytes must not end in the next request's sink.
    RecordingSink next;
    reply.expect("Gain", "GetMasterResponse");
    reader.await(next);
    const std::string rest = "cdAS:7:0:Gain:GetMasterResponse:0:NG:<0>:\n";
    reader.feed(rest.data(), rest.size());
    EXPECT_TRUE(reader.complete());
    EXPECT_TRUE(reply.fail);
    EXPECT_EQ(next.calls, "") << "a failed answer opens no sink";
    EXPECT_EQ(sink.calls, "begin(4)") << "the given-up answer did not end";
    EXPECT_EQ(sink.bytes, "ab");
}

}  // namespace
