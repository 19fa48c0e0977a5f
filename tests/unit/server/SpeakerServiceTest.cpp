#include "ServerTestSupport.h"
#include "VekSpeakerSlaveCallbackImpl.h"

using namespace vekprotocol;
using namespace vekserver;

namespace {

using SpeakerServiceTest = ServiceTest<VekSpeakerSlave, VekSpeakerSlaveCallbackImpl>;
using Lines = std::vector<std::string>;

TEST_F(SpeakerServiceTest, EnableMasksFollowTheSpeakerOrder) {
    EXPECT_EQ(serve("AS:3:0:Speaker:SetEnableRequest:0:OK:<1:0:1:0:0:1>:\n"),
              "[AST][INF]onSetEnableRequest, self=3, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to set speaker enable, ret=0.\n");
    EXPECT_EQ(response(), "AS:1:0:Speaker:SetEnableResponse:0:OK:\n");
    EXPECT_EQ(AudioSim::calls(), Lines{"setSpeakerEnable mask=37"});

    const std::pair<uint32_t, const char*> reads[] = {
        {0x3D, "2:0:Speaker:GetEnableResponse:0:OK:<1:0:1:1:1:1>"},
        {0xFFFFFFC2u, "3:0:Speaker:GetEnableResponse:0:OK:<0:1:0:0:0:0>"},
        {0x40, "4:0:Speaker:GetEnableResponse:0:OK:<0:0:0:0:0:0>"}};
    for (const auto& r : reads) {
        AudioSim::setSpeakerEnable(r.first);
        serve("AS:4:0:Speaker:GetEnableRequest:0:OK:\n");
        EXPECT_EQ(response(), std::string("AS:") + r.second + ":\n");
    }
    AudioSim::failOn("getSpeakerEnable", -7);
    EXPECT_EQ(serve("AS:5:0:Speaker:GetEnableRequest:0:OK:\n"),
              "[AST][INF]onGetEnableRequest, self=5, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Fail to get speaker enable, ret=-7.\n");
    EXPECT_EQ(response(), "AS:5:0:Speaker:GetEnableResponse:0:NG:<0:0:0:0:0:0>:\n");
}

TEST_F(SpeakerServiceTest, DelayLoopsStopAtTheFirstFailingSpeaker) {
    serve("AS:1:0:Speaker:SetDelayRequest:0:OK:<0.5:1:0.125:3.5:0:10>:\n");
    EXPECT_EQ(response(), "AS:1:0:Speaker:SetDelayResponse:0:OK:\n");
    EXPECT_EQ(serve("AS:2:0:Speaker:GetDelayRequest:0:OK:\n"),
              "[AST][INF]onGetDelayRequest, self=2, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to get speaker delay, ret=0.\n");
    EXPECT_EQ(response(), "AS:2:0:Speaker:GetDelayResponse:0:OK:<0.5:1:0.125:3.5:0:10>:\n");

    AudioSim::clearCalls();
    AudioSim::failForMask("getSpeakerDelay", 4, 12);
    AudioSim::failForMask("setSpeakerDelay", 4, 13);
    EXPECT_EQ(serve("AS:3:0:Speaker:GetDelayRequest:0:OK:\n"),
              "[AST][INF]onGetDelayRequest, self=3, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Fail to get speaker delay, ret=12.\n");
    EXPECT_EQ(response(), "AS:3:0:Speaker:GetDelayResponse:0:NG:<0:0:0:0:0:0>:\n");
    EXPECT_EQ(serve("AS:4:0:Speaker:SetDelayRequest:0:OK:<7:8:9:9:9:9>:\n"),
              "[AST][INF]onSetDelayRequest, self=4, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Fail to set speaker delay, ret=13.\n");
    EXPECT_EQ(response(), "AS:4:0:Speaker:SetDelayResponse:0:NG:\n");
    EXPECT_EQ(AudioSim::calls(),
              (Lines{"getSpeakerDelay mask=1", "getSpeakerDelay mask=2", "getSpeakerDelay mask=4",
                     "setSpeakerDelay mask=1 delay=7", "setSpeakerDelay mask=2 delay=8",
                     "setSpeakerDelay mask=4 delay=9"}));
    EXPECT_EQ(AudioSim::speakerDelay(2), 8.0f);
    EXPECT_EQ(AudioSim::speakerDelay(8), 3.5f);
}

TEST_F(SpeakerServiceTest, PatternsPlayOnTheNamedChannel) {
    const char* const cases[][3] = {
        {"SetSinePattern", "RS:1500", "setStylePattern mask=8 style=1"},
        {"SetSinePattern", "RS:1499", "setSinePattern mask=8 value=1499"},
        {"SetSinePattern", "RS:1501", "setSinePattern mask=8 value=1501"},
        {"SetSinePattern", "rf:1500", "setStylePattern mask=1 style=1"},
        {"SetStylePattern", "CF:1500", "setStylePattern mask=16 style=1500"},
        {"SetStylePattern", "XX:3", "setStylePattern mask=1 style=3"},
    };
    for (const auto& c : cases) {
        AudioSim::clearCalls();
        const std::string name = c[0];
        const char* action = name == "SetSinePattern" ? "sine" : "style";
        EXPECT_EQ(serve("AS:8:0:Speaker:" + name + "Request:0:OK:<" + c[1] + ">:\n"),
                  "[AST][INF]on" + name + "Request, self=8, peer=0, fail=0, rawDataLength=0\n" +
                      "[AST][ZIP]Success to set speaker " + action + " pattern, ret=0.\n");
        EXPECT_EQ(response().substr(response().find(':', 3)),
                  ":0:Speaker:" + name + "Response:0:OK:\n");
        EXPECT_EQ(AudioSim::calls(), Lines{c[2]}) << c[1];
    }
}

TEST_F(SpeakerServiceTest, WithoutLibraryObjectsEveryRequestFails) {
    AudioSim::setNullFactory(AudioSim::Object::Source, true);
    AudioSim::setNullFactory(AudioSim::Object::App, true);
    AudioSim::setSpeakerDelay(1, 4);
    const char* const cases[][3] = {
        {"GetEnable", "get speaker enable", "1:0:Speaker:GetEnableResponse:0:NG:<0:0:0:0:0:0>"},
        {"SetEnable", "set speaker enable", "2:0:Speaker:SetEnableResponse:0:NG"},
        {"GetDelay", "get speaker delay", "3:0:Speaker:GetDelayResponse:0:NG:<0:0:0:0:0:0>"},
        {"SetDelay", "set speaker delay", "4:0:Speaker:SetDelayResponse:0:NG"},
        {"SetStylePattern", "set speaker style pattern",
         "5:0:Speaker:SetStylePatternResponse:0:NG"},
        {"SetSinePattern", "set speaker sine pattern", "6:0:Speaker:SetSinePatternResponse:0:NG"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(serve(std::string("AS:1:0:Speaker:") + c[0] + "Request:0:OK:<1:1:1:1:1:1>:\n"),
                  std::string("[AST][INF]on") + c[0] +
                      "Request, self=1, peer=0, fail=0, rawDataLength=0\n[AST][ZIP]Fail to " +
                      c[1] + ", ret=-1.\n");
        EXPECT_EQ(response(), std::string("AS:") + c[2] + ":\n");
    }
    EXPECT_TRUE(AudioSim::calls().empty());
}

}  // namespace
