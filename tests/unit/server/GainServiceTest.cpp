#include "ServerTestSupport.h"
#include "VekGainSlaveCallbackImpl.h"

using namespace vekprotocol;
using namespace vekserver;

namespace {

using GainServiceTest = ServiceTest<VekGainSlave, VekGainSlaveCallbackImpl>;

TEST_F(GainServiceTest, GainsReadBackWhatWasSet) {
    EXPECT_EQ(serve("AS:2:0:Gain:SetMasterRequest:0:OK:<-10>:\n"),
              "[AST][INF]onSetMasterRequest, self=2, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to set master gain, ret=0.\n");
    EXPECT_EQ(response(), "AS:1:0:Gain:SetMasterResponse:0:OK:\n");
    EXPECT_EQ(serve("AS:7:0:Gain:GetMasterRequest:0:OK:\n"),
              "[AST][INF]onGetMasterRequest, self=7, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to get master gain, ret=0.\n");
    EXPECT_EQ(response(), "AS:2:0:Gain:GetMasterResponse:0:OK:<-10>:\n");

    serve("AS:3:0:Gain:SetChannelRequest:0:OK:<0.5:1:-3:-3.25:1.5:-6>:\n");
    EXPECT_EQ(AudioSim::channelGain(8), -3.25f);
    EXPECT_EQ(AudioSim::channelGain(32), -6.0f);
    EXPECT_EQ(serve("AS:4:0:Gain:GetChannelRequest:0:OK:\n"),
              "[AST][INF]onGetChannelRequest, self=4, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to get channel gain, ret=0.\n");
    EXPECT_EQ(response(), "AS:4:0:Gain:GetChannelResponse:0:OK:<0.5:1:-3:-3.25:1.5:-6>:\n");
}

TEST_F(GainServiceTest, ChannelLoopsStopAtTheFirstFailingChannel) {
    for (uint32_t mask = 1; mask <= 32; mask <<= 1) {
        AudioSim::setChannelGain(mask, 9);
    }
    AudioSim::failForMask("setChannelGain", 4, -5);
    EXPECT_EQ(serve("AS:1:0:Gain:SetChannelRequest:0:OK:<1:2:3:4:5:6>:\n"),
              "[AST][INF]onSetChannelRequest, self=1, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Fail to set channel gain, ret=-5.\n");
    EXPECT_EQ(response(), "AS:1:0:Gain:SetChannelResponse:0:NG:\n");
    EXPECT_EQ(AudioSim::calls(), (std::vector<std::string>{"setChannelGain mask=1 gain=1",
                                                           "setChannelGain mask=2 gain=2",
                                                           "setChannelGain mask=4 gain=3"}));
    EXPECT_EQ(AudioSim::channelGain(2), 2.0f);
    EXPECT_EQ(AudioSim::channelGain(8), 9.0f);

    AudioSim::failForMask("getChannelGain", 16, 3);
    EXPECT_EQ(serve("AS:2:0:Gain:GetChannelRequest:0:OK:\n"),
              "[AST][INF]onGetChannelRequest, self=2, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Fail to get channel gain, ret=3.\n");
    EXPECT_EQ(response(), "AS:2:0:Gain:GetChannelResponse:0:NG:<0:0:0:0:0:0>:\n");
    EXPECT_EQ(AudioSim::calls().size(), 8u) << "no read after the failing channel";
}

TEST_F(GainServiceTest, FadeBalanceAnswersTheLastSuccessfulSetWithoutTheLibrary) {
    AudioSim::setNullFactory(AudioSim::Object::Volume, true);
    EXPECT_EQ(serve("AS:1:0:Gain:GetFadeBalanceRequest:0:OK:\n"),
              "[AST][INF]onGetFadeBalanceRequest, self=1, peer=0, fail=0, rawDataLength=0\n");
    EXPECT_EQ(response(), "AS:1:0:Gain:GetFadeBalanceResponse:0:OK:<0:0:15>:\n");
    AudioSim::setNullFactory(AudioSim::Object::Volume, false);

    EXPECT_EQ(serve("AS:4:0:Gain:SetFadeBalanceRequest:0:OK:<2:-1:-1>:\n"),
              "[AST][INF]onSetFadeBalanceRequest, self=4, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to set fade balance, ret=0.\n");
    EXPECT_EQ(AudioSim::fadeBalance(), (std::array<int32_t, 3>{2, -1, -1}));
    AudioSim::failOn("setFadeBalance", 9);
    EXPECT_EQ(serve("AS:5:0:Gain:SetFadeBalanceRequest:0:OK:<7:7:7>:\n"),
              "[AST][INF]onSetFadeBalanceRequest, self=5, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Fail to set fade balance, ret=9.\n");
    EXPECT_EQ(response(), "AS:3:0:Gain:SetFadeBalanceResponse:0:NG:\n");
    AudioSim::setFadeBalance(5, 5, 5);
    serve("AS:6:0:Gain:GetFadeBalanceRequest:0:OK:\n");
    EXPECT_EQ(response(), "AS:4:0:Gain:GetFadeBalanceResponse:0:OK:<2:-1:4294967295>:\n");
}

TEST_F(GainServiceTest, WithoutAVolumeEveryLibraryRequestFails) {
    AudioSim::setNullFactory(AudioSim::Object::Volume, true);
    AudioSim::setMasterGain(-3);
    const char* const cases[][3] = {
        {"GetMaster", "get master gain", "AS:1:0:Gain:GetMasterResponse:0:NG:<0>:\n"},
        {"SetMaster", "set master gain", "AS:2:0:Gain:SetMasterResponse:0:NG:\n"},
        {"GetChannel", "get channel gain", "AS:3:0:Gain:GetChannelResponse:0:NG:<0:0:0:0:0:0>:\n"},
        {"SetChannel", "set channel gain", "AS:4:0:Gain:SetChannelResponse:0:NG:\n"},
        {"SetFadeBalance", "set fade balance", "AS:5:0:Gain:SetFadeBalanceResponse:0:NG:\n"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(serve(std::string("AS:1:0:Gain:") + c[0] + "Request:0:NG:<1:1:1:1:1:1>:\n"),
                  std::string("[AST][INF]on") + c[0] +
                      "Request, self=1, peer=0, fail=1, rawDataLength=0\n[AST][ZIP]Fail to " +
                      c[1] + ", ret=-1.\n");
        EXPECT_EQ(response(), c[2]);
    }
    EXPECT_TRUE(AudioSim::calls().empty());
}

}  // namespace
