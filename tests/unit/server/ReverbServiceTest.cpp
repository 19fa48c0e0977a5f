#include "ServerTestSupport.h"
#include "VekReverbSlaveCallbackImpl.h"

using namespace vekprotocol;
using namespace vekserver;

namespace {

using ReverbServiceTest = ServiceTest<VekReverbSlave, VekReverbSlaveCallbackImpl>;

TEST_F(ReverbServiceTest, ModeIsTheLastOneSetSuccessfully) {
    EXPECT_EQ(serve("AS:3:0:Reverb:GetModeRequest:0:OK:\n"),
              "[AST][INF]onGetModeRequest, self=3, peer=0, fail=0, rawDataLength=0\n");
    EXPECT_EQ(response(), "AS:1:0:Reverb:GetModeResponse:0:OK:<0>:\n");

    EXPECT_EQ(serve("AS:2:0:Reverb:SetModeRequest:0:OK:<3>:\n"),
              "[AST][INF]onSetModeRequest, self=2, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to set reverb mode, ret=0.\n");
    EXPECT_EQ(response(), "AS:2:0:Reverb:SetModeResponse:0:OK:\n");
    AudioSim::failOn("setReverbMode", 4);
    EXPECT_EQ(serve("AS:4:0:Reverb:SetModeRequest:0:OK:<-2>:\n"),
              "[AST][INF]onSetModeRequest, self=4, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Fail to set reverb mode, ret=4.\n");
    EXPECT_EQ(response(), "AS:3:0:Reverb:SetModeResponse:0:NG:\n");

    // GetEnable sets mode 0 in the library but is no mode change of the master's.
    EXPECT_EQ(serve("AS:5:0:Reverb:GetEnableRequest:0:OK:\n"),
              "[AST][INF]onGetEnableRequest, self=5, peer=0, fail=0, rawDataLength=0\n");
    EXPECT_EQ(response(), "AS:4:0:Reverb:GetEnableResponse:0:OK:<1>:\n");
    serve("AS:6:0:Reverb:GetModeRequest:0:OK:\n");
    EXPECT_EQ(response(), "AS:5:0:Reverb:GetModeResponse:0:OK:<3>:\n");
    EXPECT_EQ(AudioSim::calls(),
              (std::vector<std::string>{"setReverbMode mode=3", "setReverbMode mode=-2",
                                        "setReverbMode mode=0"}));
}

TEST_F(ReverbServiceTest, AnUnusableLibraryReadsAsDisabledButSetModeFails) {
    AudioSim::failOn("setReverbMode", 6);
    EXPECT_EQ(serve("AS:1:0:Reverb:GetEnableRequest:0:OK:\n"),
              "[AST][INF]onGetEnableRequest, self=1, peer=0, fail=0, rawDataLength=0\n");
    EXPECT_EQ(response(), "AS:1:0:Reverb:GetEnableResponse:0:OK:<0>:\n");

    AudioSim::setNullFactory(AudioSim::Object::App, true);
    EXPECT_EQ(serve("AS:2:0:Reverb:GetEnableRequest:0:OK:\n"),
              "[AST][INF]onGetEnableRequest, self=2, peer=0, fail=0, rawDataLength=0\n");
    EXPECT_EQ(response(), "AS:2:0:Reverb:GetEnableResponse:0:OK:<0>:\n");
    EXPECT_EQ(serve("AS:3:0:Reverb:SetModeRequest:0:OK:<3>:\n"),
              "[AST][INF]onSetModeRequest, self=3, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Fail to set reverb mode, ret=-1.\n");
    EXPECT_EQ(response(), "AS:3:0:Reverb:SetModeResponse:0:NG:\n");
    serve("AS:4:0:Reverb:GetModeRequest:0:OK:\n");
    EXPECT_EQ(response(), "AS:4:0:Reverb:GetModeResponse:0:OK:<0>:\n");
    EXPECT_EQ(AudioSim::calls(), std::vector<std::string>{"setReverbMode mode=0"});
}

}  // namespace
