#include <array>

#include "ParamImage.h"
#include "ServerTestSupport.h"
#include "VekEqV2SlaveCallbackImpl.h"

using namespace vekprotocol;
using namespace vekserver;

namespace {

using EqV2ServiceTest = ServiceTest<VekEqV2Slave, VekEqV2SlaveCallbackImpl>;
using Bytes = std::vector<uint8_t>;

// A layout buffer with its one record: per channel a 168-byte entry, mask then count.
Bytes layoutBuffer(const std::array<int32_t, 6>& counts) {
    ParamImage image(4 + 1012);
    image.u32(0, 1012).u16(4, 0).u16(6, 1008);
    for (uint32_t i = 0; i < 6; ++i) {
        image.u32(8 + 168 * i, 1u << i).u32(12 + 168 * i, static_cast<uint32_t>(counts[i]));
    }
    return image.bytes;
}

// A band record's body: mask, one entry, that entry's band, value1 and value2.
Bytes bandBody(uint32_t mask, uint32_t band, uint32_t value1, uint16_t value2) {
    ParamImage body(1128);
    body.u32(0, mask).u32(4, 1).u32(8, band).u32(12, value1).u16(16, value2);
    return body.bytes;
}

TEST_F(EqV2ServiceTest, BandCountsTravelInTheLayoutRecord) {
    EXPECT_EQ(serve("AS:3:0:EqV2:SetBandCountRequest:0:OK:<10:10:5:5:3:0>:\n"),
              "[AST][INF]onSetBandCountRequest, self=3, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to set front EQ channel layout, ret=0.\n");
    EXPECT_EQ(response(), "AS:1:0:EqV2:SetBandCountResponse:0:OK:\n");
    EXPECT_EQ(serve("AS:4:0:EqV2:GetBandCountRequest:0:OK:\n"),
              "[AST][INF]onGetBandCountRequest, self=4, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to get front EQ channel layout, ret=0.\n");
    EXPECT_EQ(response(), "AS:2:0:EqV2:GetBandCountResponse:0:OK:<10:10:5:5:3:0>:\n");

    const auto params = AudioSim::paramCalls();
    ASSERT_EQ(params.size(), 2u);
    EXPECT_EQ(params[0].operation + " " + params[0].app + " " + params[0].effect,
              "setEffectParam frontApp equalizer");
    EXPECT_EQ(params[0].bytes, layoutBuffer({10, 10, 5, 5, 3, 0}));
    EXPECT_EQ(params[1].bytes, layoutBuffer({0, 0, 0, 0, 0, 0})) << "the query holds masks only";
}

TEST_F(EqV2ServiceTest, BandCountsReadBackOnlyFromASuccessfulAnswer) {
    const struct {
        int32_t status;
        Bytes image;
        const char* result;
        const char* response;
    } cases[] = {
        {0, layoutBuffer({12, 12, 0, 0, 6, 1}), "Success",
         "1:0:EqV2:GetBandCountResponse:0:OK:<12:12:0:0:6:1>"},
        {0, AudioSim::paramBuffer({}), "Success",
         "2:0:EqV2:GetBandCountResponse:0:OK:<0:0:0:0:0:0>"},
        {5, layoutBuffer({12, 12, 0, 0, 6, 1}), "Fail",
         "3:0:EqV2:GetBandCountResponse:0:NG:<0:0:0:0:0:0>"},
    };
    for (const auto& c : cases) {
        AudioSim::scriptGetEffectParam(c.status, c.image);
        EXPECT_EQ(serve("AS:1:0:EqV2:GetBandCountRequest:0:OK:\n"),
                  "[AST][INF]onGetBandCountRequest, self=1, peer=0, fail=0, rawDataLength=0\n"
                  "[AST][ZIP]" +
                      std::string(c.result) +
                      " to get front EQ channel layout, ret=" + std::to_string(c.status) + ".\n");
        EXPECT_EQ(response(), std::string("AS:") + c.response + ":\n");
    }
}

TEST_F(EqV2ServiceTest, BandConfigTravelsInTheFirstBandEntry) {
    EXPECT_EQ(serve("AS:7:0:EqV2:SetBandConfigRequest:0:OK:<RS:3:2:-1:-3.5:0.707:0:1>:\n"),
              "[AST][INF]onSetBandConfigRequest, self=7, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to set front EQ band config, ret=0.\n");
    EXPECT_EQ(response(), "AS:1:0:EqV2:SetBandConfigResponse:0:OK:\n");
    EXPECT_EQ(serve("AS:8:0:EqV2:GetBandConfigRequest:0:OK:<RS:3>:\n"),
              "[AST][INF]onGetBandConfigRequest, self=8, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to get front EQ channel band config, ret=0.\n");
    EXPECT_EQ(response(),
              "AS:2:0:EqV2:GetBandConfigResponse:0:OK:<RS:3:2:65535:-3.5:0.707:0:1>:\n");

    const auto params = AudioSim::paramCalls();
    ASSERT_EQ(params.size(), 2u);
    ParamImage query(4 + 1132);
    query.u32(0, 1132).u16(4, 1).u16(6, 1128).u32(8, 8).u32(12, 1).u32(16, 3);
    EXPECT_EQ(params[1].bytes, query.bytes);
    query.u32(20, 2).u16(24, 65535).f32(28, -3.5f).f32(32, 0.707f).u32(36, 0).u32(40, 1);
    EXPECT_EQ(params[0].bytes, query.bytes) << "value2 in 16 bits, zeros from byte 44";
}

TEST_F(EqV2ServiceTest, BandConfigAnswerNamesTheRequestedChannelAndBand) {
    AudioSim::setEqBand(1, 2, {7, 300, 1.5f, 2, -4, 9});
    serve("AS:1:0:EqV2:GetBandConfigRequest:0:OK:<XX:2>:\n");
    EXPECT_EQ(response(), "AS:1:0:EqV2:GetBandConfigResponse:0:OK:<XX:2:7:300:1.5:2:-4:9>:\n");
    EXPECT_EQ(VekLe::getU32(AudioSim::paramCalls().at(0).bytes.data() + 8), 1u) << "XX reads LF";

    const struct {
        int32_t status;
        Bytes image;
        const char* response;
    } cases[] = {
        {0, AudioSim::paramBuffer({{1, bandBody(2, 4, 11, 12)}, {1, bandBody(4, 9, 21, 22)}}),
         "2:0:EqV2:GetBandConfigResponse:0:OK:<CF:5:21:22:0:0:0:0>"},
        {0, AudioSim::paramBuffer({}), "3:0:EqV2:GetBandConfigResponse:0:OK:<:0:0:0:0:0:0:0>"},
        {3, {}, "4:0:EqV2:GetBandConfigResponse:0:NG:<:0:0:0:0:0:0:0>"},
    };
    for (const auto& c : cases) {
        AudioSim::scriptGetEffectParam(c.status, c.image);
        serve("AS:1:0:EqV2:GetBandConfigRequest:0:OK:<CF:5>:\n");
        EXPECT_EQ(response(), std::string("AS:") + c.response + ":\n");
    }
}

}  // namespace
