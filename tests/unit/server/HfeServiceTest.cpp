#include "ParamImage.h"
#include "ServerTestSupport.h"
#include "VekHfeSlaveCallbackImpl.h"

using namespace vekprotocol;
using namespace vekserver;

namespace {

using HfeServiceTest = ServiceTest<VekHfeSlave, VekHfeSlaveCallbackImpl>;

// The one 20-byte record: mask, three switches, the value.
std::vector<uint8_t> hfeBody(uint32_t mask, uint32_t flag1, uint32_t flag2, uint32_t flag3,
                             float value) {
    ParamImage body(20);
    body.u32(0, mask).u32(4, flag1).u32(8, flag2).u32(12, flag3).f32(16, value);
    return body.bytes;
}

TEST_F(HfeServiceTest, ChannelConfigTravelsInOneRecord) {
    EXPECT_EQ(serve("AS:2:0:Hfe:SetChannelConfigRequest:0:OK:<RS:1:0:1:2.5>:\n"),
              "[AST][INF]onSetChannelConfigRequest, self=2, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to set front HFE channel config, ret=0.\n");
    EXPECT_EQ(response(), "AS:1:0:Hfe:SetChannelConfigResponse:0:OK:\n");
    EXPECT_EQ(serve("AS:3:0:Hfe:GetChannelConfigRequest:0:OK:<RS>:\n"),
              "[AST][INF]onGetChannelConfigRequest, self=3, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to get front HFE channel config, ret=0.\n");
    EXPECT_EQ(response(), "AS:2:0:Hfe:GetChannelConfigResponse:0:OK:<RS:1:0:1:2.5>:\n");

    const auto params = AudioSim::paramCalls();
    ASSERT_EQ(params.size(), 2u);
    EXPECT_EQ(params[0].effect, "hfe");
    EXPECT_EQ(params[0].bytes, AudioSim::paramBuffer({{0, hfeBody(8, 1, 0, 1, 2.5f)}}));
    EXPECT_EQ(params[1].bytes, AudioSim::paramBuffer({{0, hfeBody(8, 0, 0, 0, 0)}}))
        << "the query holds the mask only";
}

TEST_F(HfeServiceTest, ReadBackTakesTheLastRecordAndNamesTheRequestedChannel) {
    const auto two =
        AudioSim::paramBuffer({{0, hfeBody(16, 1, 1, 1, 9)}, {0, hfeBody(1, 0, 0, 2, -1)}});
    const struct {
        const char* channel;
        int32_t status;
        std::vector<uint8_t> image;
        const char* response;
    } cases[] = {
        {"L1", 0, AudioSim::paramBuffer({{0, hfeBody(32, 0, 7, 1, 0.5f)}}),
         "1:0:Hfe:GetChannelConfigResponse:0:OK:<L1:0:1:1:0.5>"},
        {"CF", 0, two, "2:0:Hfe:GetChannelConfigResponse:0:OK:<CF:0:0:1:-1>"},
        {"CF", 0, AudioSim::paramBuffer({}), "3:0:Hfe:GetChannelConfigResponse:0:OK:<CF:0:0:0:0>"},
        {"CF", 4, two, "4:0:Hfe:GetChannelConfigResponse:0:NG:<:0:0:0:0>"},
    };
    for (const auto& c : cases) {
        AudioSim::scriptGetEffectParam(c.status, c.image);
        serve(std::string("AS:1:0:Hfe:GetChannelConfigRequest:0:OK:<") + c.channel + ">:\n");
        EXPECT_EQ(response(), std::string("AS:") + c.response + ":\n");
    }
}

}  // namespace
