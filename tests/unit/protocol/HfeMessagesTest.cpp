#include <gtest/gtest.h>

#include <string>

#include "FeatureTestSupport.h"

using namespace vektest;

namespace {

// Every documented example, then the messages and values it leaves out.
TEST(HfeMessages, EveryMessageTravelsBothWays) {
    using S = VekHfeSlave;
    using M = VekHfeMaster;
    const std::vector<Row> rows = {
        row(&M::encodeSetEnableRequest, 5, "AS:5:0:Hfe:SetEnableRequest:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&M::encodeGetChannelConfigRequest, 6, "AS:6:0:Hfe:GetChannelConfigRequest:0:OK:<CF>:\n",
            [](auto& r) { r.channel = "CF"; }),
        row(&S::encodeGetChannelConfigResponse, 17,
            "AS:17:0:Hfe:GetChannelConfigResponse:0:OK:<CF:1:0:1:0.75>:\n",
            [](auto& r) {
                r.channel = "CF";
                r.flag1 = true;
                r.flag3 = true;
                r.value = 0.75f;
            }),
        row(&S::encodeGetEnableResponse, 18, "AS:18:0:Hfe:GetEnableResponse:0:NG:<0>:\n",
            [](auto& r) { r.fail = true; }),
        row(&M::encodeSetChannelConfigRequest, 7,
            "AS:7:0:Hfe:SetChannelConfigRequest:0:OK:<LS:1:1:0:-3.5>:\n",
            [](auto& r) {
                r.channel = "LS";
                r.flag1 = true;
                r.flag2 = true;
                r.value = -3.5f;
            }),
        // A failed configuration keeps its block, the empty channel name first.
        row(&S::encodeGetChannelConfigResponse, 19,
            "AS:19:0:Hfe:GetChannelConfigResponse:0:NG:<:0:0:0:0>:\n",
            [](auto& r) { r.fail = true; }),

        row(&M::encodeGetEnableRequest, 8, "AS:8:0:Hfe:GetEnableRequest:0:OK:\n"),
        row(&S::encodeGetEnableResponse, 20, "AS:20:0:Hfe:GetEnableResponse:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&S::encodeSetEnableResponse, 21, "AS:21:0:Hfe:SetEnableResponse:0:OK:\n"),
        row(&S::encodeSetChannelConfigResponse, 22, "AS:22:0:Hfe:SetChannelConfigResponse:0:OK:\n"),
        row(&M::encodeSetChannelConfigRequest, 9,
            "AS:9:0:Hfe:SetChannelConfigRequest:0:OK:<RF:0:1:0:1e-05>:\n",
            [](auto& r) {
                r.channel = "RF";
                r.flag2 = true;
                r.value = 1e-05f;
            }),
    };
    expectRows(rows, 8);
}

TEST(HfeMessages, OddFieldsReadAsTheSpecSays) {
    FeatureLink link;
    EXPECT_EQ(link.toSlave("AS:5:0:Hfe:SetEnableRequest:0:OK:<2>:\n"),
              arrives<VekParamHfeSetEnableRequest>("Hfe", 5));
    EXPECT_EQ(link.toSlave("AS:8:0:Hfe:GetEnableRequest:0:OK:<1:2:3>:\n"),
              arrives<VekParamHfeGetEnableRequest>("Hfe", 8));
    EXPECT_EQ(link.toSlave("AS:7:0:Hfe:SetChannelConfigRequest:0:OK:<LS:1x: 1:2:-3.5dB:extra>:\n"),
              arrives<VekParamHfeSetChannelConfigRequest>("Hfe", 7, [](auto& r) {
                  r.channel = "LS";
                  r.flag1 = true;
                  r.flag2 = true;
                  r.value = -3.5f;
              }));
}

TEST(HfeMessages, MissingOrUnreadableFieldsDropTheRequest) {
    const std::string config = "AS:7:0:Hfe:SetChannelConfigRequest:0:OK:";
    expectDropped({
        {config + "<LS:1:1:0:-3.5>:\n", config + "<LS:1:1:0>:\n"},
        {config + "<LS:1:1:0:-3.5>:\n", config + "<LS:1:yes:0:-3.5>:\n"},
        {config + "<LS:1:1:0:-3.5>:\n", config + "<LS:1:1:0:loud>:\n"},
        {"AS:5:0:Hfe:SetEnableRequest:0:OK:<1>:\n", "AS:5:0:Hfe:SetEnableRequest:0:OK:\n"},
        {"AS:6:0:Hfe:GetChannelConfigRequest:0:OK:<CF>:\n",
         "AS:6:0:Hfe:GetChannelConfigRequest:0:OK:<>:\n"},
    });
}

}  // namespace
