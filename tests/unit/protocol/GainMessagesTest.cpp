#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "FeatureTestSupport.h"

using namespace vektest;

namespace {

// Every documented example (self 1 to 4 and 20 to 24), then one row for each
// message it leaves out and the fade/balance -1.
TEST(GainMessages, EveryMessageTravelsBothWays) {
    using S = VekGainSlave;
    using M = VekGainMaster;
    const std::vector<Row> rows = {
        row(&M::encodeGetMasterRequest, 1, "AS:1:0:Gain:GetMasterRequest:0:OK:\n"),
        row(&S::encodeGetMasterResponse, 20, "AS:20:0:Gain:GetMasterResponse:0:OK:<-12.5>:\n",
            [](auto& r) { r.masterGain = -12.5f; }),
        row(&M::encodeSetMasterRequest, 2, "AS:2:0:Gain:SetMasterRequest:0:OK:<-10>:\n",
            [](auto& r) { r.masterGain = -10.0f; }),
        row(&S::encodeSetMasterResponse, 21, "AS:21:0:Gain:SetMasterResponse:0:OK:\n"),
        row(&M::encodeSetChannelRequest, 3,
            "AS:3:0:Gain:SetChannelRequest:0:OK:<0:0:-3:-3:1.5:0>:\n",
            [](auto& r) {
                set(r.channelGain, {0, 0, -3, -3, 1.5f, 0});
            }),
        row(&S::encodeGetChannelResponse, 22,
            "AS:22:0:Gain:GetChannelResponse:0:OK:<0:0:-3:-3:1.5:0>:\n",
            [](auto& r) {
                set(r.channelGain, {0, 0, -3, -3, 1.5f, 0});
            }),
        row(&M::encodeSetFadeBalanceRequest, 4,
            "AS:4:0:Gain:SetFadeBalanceRequest:0:OK:<2:-1:15>:\n",
            [](auto& r) {
                set(r.fadeBalance, {2, -1, 15});
            }),
        row(&S::encodeGetFadeBalanceResponse, 23,
            "AS:23:0:Gain:GetFadeBalanceResponse:0:OK:<0:0:15>:\n",
            [](auto& r) {
                set(r.fadeBalance, {0, 0, 15});
            }),
        row(&S::encodeGetChannelResponse, 24,
            "AS:24:0:Gain:GetChannelResponse:0:NG:<0:0:0:0:0:0>:\n",
            [](auto& r) { r.fail = true; }),

        row(&M::encodeGetChannelRequest, 5, "AS:5:9:Gain:GetChannelRequest:0:OK:\n",
            [](auto& r) { r.peer = 9; }),
        row(&S::encodeSetChannelResponse, 25, "AS:25:0:Gain:SetChannelResponse:0:OK:\n"),
        row(&M::encodeGetFadeBalanceRequest, 6, "AS:6:0:Gain:GetFadeBalanceRequest:0:NG:\n",
            [](auto& r) { r.fail = true; }),
        row(&S::encodeSetFadeBalanceResponse, 26, "AS:26:0:Gain:SetFadeBalanceResponse:0:OK:\n"),
        row(&M::encodeSetChannelRequest, 65535,
            "AS:65535:0:Gain:SetChannelRequest:0:OK:<0.25:-0.5:12:-96:1e-05:3.33333>:\n",
            [](auto& r) {
                set(r.channelGain, {0.25f, -0.5f, 12, -96, 1e-05f, 3.33333f});
            }),
        row(&S::encodeGetMasterResponse, 27, "AS:27:0:Gain:GetMasterResponse:0:OK:<0.1>:\n",
            [](auto& r) { r.masterGain = 0.1f; }),
        row(&M::encodeSetFadeBalanceRequest, 7,
            "AS:7:0:Gain:SetFadeBalanceRequest:0:OK:<-7:2147483647:-2147483648>:\n",
            [](auto& r) {
                set(r.fadeBalance, {-7, 2147483647, -2147483647 - 1});
            }),
        // The third element travels unsigned and the master reads it back as -1.
        row(&S::encodeGetFadeBalanceResponse, 28,
            "AS:28:0:Gain:GetFadeBalanceResponse:0:OK:<-1:-1:4294967295>:\n",
            [](auto& r) {
                set(r.fadeBalance, {-1, -1, -1});
            }),
    };
    expectRows(rows, 12);
}

TEST(GainMessages, FloatsAreWrittenWithSixSignificantDigits) {
    const std::pair<float, const char*> cases[] = {
        {0.1f, "<0.1>"}, {0.1234567f, "<0.123457>"}, {0.00001f, "<1e-05>"}, {-20.0f, "<-20>"}};
    VekGainSlave slave;
    for (const auto& c : cases) {
        VekParamGainGetMasterResponse r;
        r.masterGain = c.first;
        std::stringstream out;
        slave.encodeGetMasterResponse(out, r);
        EXPECT_EQ(out.str(), std::string("AS:0:0:Gain:GetMasterResponse:0:OK:") + c.second + ":\n");
    }
}

TEST(GainMessages, ExtraFieldsAreIgnored) {
    FeatureLink link;
    EXPECT_EQ(link.toSlave("AS:3:0:Gain:SetChannelRequest:0:OK:<1:2:3:4:5:6:7>:\n"),
              arrives<VekParamGainSetChannelRequest>("Gain", 3, [](auto& r) {
                  set(r.channelGain, {1, 2, 3, 4, 5, 6});
              }));
    EXPECT_EQ(link.toSlave("AS:1:0:Gain:GetMasterRequest:0:OK:<5>:\n"),
              arrives<VekParamGainGetMasterRequest>("Gain", 1));
}

TEST(GainMessages, MissingOrUnreadableFieldsDropTheRequest) {
    expectDropped({
        {"AS:2:0:Gain:SetMasterRequest:0:OK:<-10>:\n", "AS:2:0:Gain:SetMasterRequest:0:OK:\n"},
        {"AS:2:0:Gain:SetMasterRequest:0:OK:<-10>:\n", "AS:2:0:Gain:SetMasterRequest:0:OK:<x>:\n"},
        {"AS:2:0:Gain:SetMasterRequest:0:OK:<1e38>:\n",
         "AS:2:0:Gain:SetMasterRequest:0:OK:<1e99>:\n"},
        {"AS:3:0:Gain:SetChannelRequest:0:OK:<1:2:3:4:5:6>:\n",
         "AS:3:0:Gain:SetChannelRequest:0:OK:<1:2:3:4:5>:\n"},
        {"AS:3:0:Gain:SetChannelRequest:0:OK:<1:2:3:4:5:6>:\n",
         "AS:3:0:Gain:SetChannelRequest:0:OK:<1:2:3:abc:5:6>:\n"},
        // All three elements of the request are signed.
        {"AS:4:0:Gain:SetFadeBalanceRequest:0:OK:<0:0:2147483647>:\n",
         "AS:4:0:Gain:SetFadeBalanceRequest:0:OK:<0:0:4294967295>:\n"},
        {"AS:4:0:Gain:SetFadeBalanceRequest:0:OK:<0:0:15>:\n",
         "AS:4:0:Gain:SetFadeBalanceRequest:0:OK:<0:0>:\n"},
    });
}

TEST(GainMessages, ADroppedRequestStillShowsInTheReceiveDump) {
    FeatureLink link;
    const std::string frame = "AS:2:0:Gain:SetMasterRequest:0:OK:<loud>:\n";
    EXPECT_TRUE(link.toSlave(frame).empty());
    EXPECT_EQ(link.slaveLog, "\n+RECV-" + frame + "-RECV\n\n");
}

}  // namespace
