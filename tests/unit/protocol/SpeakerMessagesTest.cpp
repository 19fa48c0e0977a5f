#include <gtest/gtest.h>

#include <string>

#include "FeatureTestSupport.h"

using namespace vektest;

namespace {

// Every documented example, then the messages it leaves out.
TEST(SpeakerMessages, EveryMessageTravelsBothWays) {
    using S = VekSpeakerSlave;
    using M = VekSpeakerMaster;
    const std::vector<Row> rows = {
        row(&M::encodeSetEnableRequest, 3, "AS:3:0:Speaker:SetEnableRequest:0:OK:<1:1:0:0:1:1>:\n",
            [](auto& r) {
                set(r.enable, {true, true, false, false, true, true});
            }),
        row(&S::encodeGetDelayResponse, 42,
            "AS:42:0:Speaker:GetDelayResponse:0:OK:<0:0:1.5:1.5:0.25:0>:\n",
            [](auto& r) {
                set(r.delay, {0, 0, 1.5f, 1.5f, 0.25f, 0});
            }),
        row(&M::encodeSetSinePatternRequest, 4,
            "AS:4:0:Speaker:SetSinePatternRequest:0:OK:<LF:1000>:\n",
            [](auto& r) {
                r.channel = "LF";
                r.frequency = 1000;
            }),
        row(&S::encodeSetSinePatternResponse, 43, "AS:43:0:Speaker:SetSinePatternResponse:0:OK:\n"),
        row(&M::encodeSetEnableRequest, 1, "AS:1:0:Speaker:SetEnableRequest:0:OK:<1:0:1:0:1:0>:\n",
            [](auto& r) {
                set(r.enable, {true, false, true, false, true, false});
            }),
        row(&S::encodeGetDelayResponse, 44,
            "AS:44:0:Speaker:GetDelayResponse:0:OK:<0.5:1:0.125:3.33333:0:10>:\n",
            [](auto& r) {
                set(r.delay, {0.5f, 1, 0.125f, 3.33333f, 0, 10});
            }),
        row(&M::encodeSetStylePatternRequest, 9,
            "AS:9:0:Speaker:SetStylePatternRequest:0:OK:<CF:2>:\n",
            [](auto& r) {
                r.channel = "CF";
                r.style = 2;
            }),

        row(&M::encodeGetEnableRequest, 10, "AS:10:0:Speaker:GetEnableRequest:0:OK:\n"),
        row(&S::encodeGetEnableResponse, 45,
            "AS:45:0:Speaker:GetEnableResponse:0:OK:<0:1:1:0:0:1>:\n",
            [](auto& r) {
                set(r.enable, {false, true, true, false, false, true});
            }),
        row(&S::encodeGetEnableResponse, 46,
            "AS:46:0:Speaker:GetEnableResponse:0:NG:<0:0:0:0:0:0>:\n",
            [](auto& r) { r.fail = true; }),
        row(&S::encodeSetEnableResponse, 47, "AS:47:0:Speaker:SetEnableResponse:0:OK:\n"),
        row(&M::encodeGetDelayRequest, 11, "AS:11:0:Speaker:GetDelayRequest:0:OK:\n"),
        row(&M::encodeSetDelayRequest, 12,
            "AS:12:0:Speaker:SetDelayRequest:0:OK:<2.5:-1:0.001:1e-05:100:0.75>:\n",
            [](auto& r) {
                set(r.delay, {2.5f, -1, 0.001f, 1e-05f, 100, 0.75f});
            }),
        row(&S::encodeSetDelayResponse, 48, "AS:48:0:Speaker:SetDelayResponse:0:OK:\n"),
        row(&S::encodeSetStylePatternResponse, 49,
            "AS:49:0:Speaker:SetStylePatternResponse:0:OK:\n"),
        row(&M::encodeSetSinePatternRequest, 13,
            "AS:13:0:Speaker:SetSinePatternRequest:0:OK:<L1:-1>:\n",
            [](auto& r) {
                r.channel = "L1";
                r.frequency = -1;
            }),
    };
    expectRows(rows, 12);
}

TEST(SpeakerMessages, BooleansAreTrueExactlyWhenTheyReadAsOne) {
    FeatureLink link;
    EXPECT_EQ(link.toSlave("AS:1:0:Speaker:SetEnableRequest:0:OK:< 1:1.7:2:1x:-1:0:9>:\n"),
              arrives<VekParamSpeakerSetEnableRequest>("Speaker", 1, [](auto& r) {
                  set(r.enable, {true, true, false, true, false, false});
              }));
    EXPECT_EQ(link.toSlave("AS:10:0:Speaker:GetEnableRequest:0:OK:<1:1:1:1:1:1>:\n"),
              arrives<VekParamSpeakerGetEnableRequest>("Speaker", 10));
}

TEST(SpeakerMessages, UnknownOrIncompleteRequestsAreDropped) {
    const std::string enable = "AS:1:0:Speaker:SetEnableRequest:0:OK:";
    const std::string delay = "AS:12:0:Speaker:SetDelayRequest:0:OK:";
    expectDropped({
        // A Reverb message name under the feature Speaker.
        {"AS:2:0:Reverb:GetModeRequest:0:OK:\n", "AS:2:0:Speaker:GetModeRequest:0:OK:\n"},
        {enable + "<1:0:1:0:1:0>:\n", enable + "<1:0:1:0:1>:\n"},
        {enable + "<1:0:1:0:1:0>:\n", enable + "<1:0:1:0:1:on>:\n"},
        {delay + "<1:2:3:4:5:6>:\n", delay + "<1:2:3:4:5:1e99>:\n"},
        {"AS:9:0:Speaker:SetStylePatternRequest:0:OK:<CF:2>:\n",
         "AS:9:0:Speaker:SetStylePatternRequest:0:OK:<CF>:\n"},
        {"AS:4:0:Speaker:SetSinePatternRequest:0:OK:<LF:1000>:\n",
         "AS:4:0:Speaker:SetSinePatternRequest:0:OK:<LF:kHz>:\n"},
    });
}

}  // namespace
