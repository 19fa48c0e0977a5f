#include "ParamImage.h"
#include "ServerTestSupport.h"
#include "VekVbSlaveCallbackImpl.h"

using namespace vekprotocol;
using namespace vekserver;

namespace {

using VbServiceTest = ServiceTest<VekVbSlave, VekVbSlaveCallbackImpl>;

const std::string kParams = "1:2:3:4:5:6:7:8:9:10:11:12:13:14:15:16:17:18";

TEST_F(VbServiceTest, ParamsAreStoredInTheLibrarysOrderAndReadBackInOurs) {
    EXPECT_EQ(serve("AS:2:0:Vb:SetChannelConfigRequest:0:OK:<CF:1:3:" + kParams + ">:\n"),
              "[AST][INF]onSetChannelConfigRequest, self=2, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to set front VB channel config, ret=0.\n");
    EXPECT_EQ(response(), "AS:1:0:Vb:SetChannelConfigResponse:0:OK:\n");
    EXPECT_EQ(serve("AS:3:0:Vb:GetChannelConfigRequest:0:OK:<CF>:\n"),
              "[AST][INF]onGetChannelConfigRequest, self=3, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to get front VB channel config, ret=0.\n");
    EXPECT_EQ(response(), "AS:2:0:Vb:GetChannelConfigResponse:0:OK:<CF:1:3:" + kParams + ">:\n");

    const auto params = AudioSim::paramCalls();
    ASSERT_EQ(params.size(), 2u);
    ParamImage buffer(4 + 84);
    buffer.u32(0, 84).u16(4, 0).u16(6, 80).u32(8, 16);
    EXPECT_EQ(params[1].bytes, buffer.bytes) << "the query holds the mask only";
    const float library[] = {2, 1, 4, 3, 5, 10, 6, 11, 7, 12, 8, 13, 9, 14, 15, 16, 17, 18};
    for (size_t i = 0; i < 18; ++i) {
        buffer.f32(16 + 4 * i, library[i]);
    }
    EXPECT_EQ(params[0].effect, "vb");
    EXPECT_EQ(params[0].bytes, buffer.u16(12, 1).u16(14, 3).bytes);

    AudioSim::failOn("getEffectParam", 6);
    EXPECT_EQ(serve("AS:4:0:Vb:GetChannelConfigRequest:0:OK:<CF>:\n"),
              "[AST][INF]onGetChannelConfigRequest, self=4, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Fail to get front VB channel config, ret=6.\n");
    EXPECT_EQ(response(),
              "AS:3:0:Vb:GetChannelConfigResponse:0:NG:<:0:0:0:0:0:0:0:0:0:0:0:0:0:0:"
              "0:0:0:0:0:0>:\n");
}

TEST_F(VbServiceTest, NumberKeepsItsLow16BitsAndUnknownChannelsUseLf) {
    const std::pair<const char*, const char*> cases[] = {{"-1", "65535"}, {"65537", "1"}};
    for (const auto& c : cases) {
        serve("AS:1:0:Vb:SetChannelConfigRequest:0:OK:<XX:0:" + (c.first + (":" + kParams)) +
              ">:\n");
        serve("AS:2:0:Vb:GetChannelConfigRequest:0:OK:<XX>:\n");
        const std::string& r = response();
        EXPECT_EQ(r.substr(r.find('<')), "<XX:0:" + (c.second + (":" + kParams)) + ">:\n");
    }
    EXPECT_EQ(AudioSim::effectRecord("vb", 1).size(), 80u) << "XX addresses LF";
}

}  // namespace
