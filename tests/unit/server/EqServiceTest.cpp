#include "ServerTestSupport.h"
#include "VekEqSlaveCallbackImpl.h"
#include "VekLe.h"

using namespace vekprotocol;
using namespace vekserver;

namespace {

using EqServiceTest = ServiceTest<VekEqSlave, VekEqSlaveCallbackImpl>;

TEST_F(EqServiceTest, BandCountsAreTwentyWithoutAskingTheLibrary) {
    AudioSim::setNullFactory(AudioSim::Object::App, true);
    for (int self = 1; self <= 2; ++self) {
        EXPECT_EQ(serve("AS:6:0:Eq:GetBandCountRequest:0:OK:\n"),
                  "[AST][INF]onGetBandCountRequest, self=6, peer=0, fail=0, rawDataLength=0\n");
        EXPECT_EQ(response(), "AS:" + std::to_string(self) +
                                  ":0:Eq:GetBandCountResponse:0:OK:<20:20:20:20:20:20>:\n");
    }
    EXPECT_TRUE(AudioSim::calls().empty());
}

TEST_F(EqServiceTest, BandConfigGoesThroughTheEqualizerBandRecord) {
    EXPECT_EQ(serve("AS:1:0:Eq:SetBandConfigRequest:0:OK:<L1:19:-6:70000:0.25:4:-1:2>:\n"),
              "[AST][INF]onSetBandConfigRequest, self=1, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to set front EQ band config, ret=0.\n");
    EXPECT_EQ(response(), "AS:1:0:Eq:SetBandConfigResponse:0:OK:\n");
    EXPECT_EQ(serve("AS:2:0:Eq:GetBandConfigRequest:0:OK:<L1:19>:\n"),
              "[AST][INF]onGetBandConfigRequest, self=2, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to get front EQ channel band config, ret=0.\n");
    EXPECT_EQ(response(), "AS:2:0:Eq:GetBandConfigResponse:0:OK:<L1:19:-6:4464:0.25:4:-1:2>:\n");

    const std::vector<uint8_t> set = AudioSim::paramCalls().at(0).bytes;
    ASSERT_EQ(set.size(), 4u + 1132);
    EXPECT_EQ(VekLe::getU32(set.data() + 8), 32u);
    EXPECT_EQ(VekLe::getU32(set.data() + 16), 19u);
}

}  // namespace
