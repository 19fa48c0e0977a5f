#include <gtest/gtest.h>

#include <string>

#include "FeatureTestSupport.h"

using namespace vektest;

namespace {

// Every documented example, then the messages and values it leaves out.
TEST(VbMessages, EveryMessageTravelsBothWays) {
    using S = VekVbSlave;
    using M = VekVbMaster;
    const std::vector<Row> rows = {
        row(&M::encodeGetChannelConfigRequest, 8, "AS:8:0:Vb:GetChannelConfigRequest:0:OK:<LF>:\n",
            [](auto& r) { r.channel = "LF"; }),
        row(&S::encodeGetChannelConfigResponse, 21,
            "AS:21:0:Vb:GetChannelConfigResponse:0:OK:"
            "<LF:1:2:0.5:1:100:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0>:\n",
            [](auto& r) {
                r.channel = "LF";
                r.flag = true;
                r.number = 2;
                r.params[0] = 0.5f;
                r.params[1] = 1;
                r.params[2] = 100;
            }),
        // A failed configuration: the empty channel name and twenty 0 fields.
        row(&S::encodeGetChannelConfigResponse, 22,
            "AS:22:0:Vb:GetChannelConfigResponse:0:NG:"
            "<:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0>:\n",
            [](auto& r) { r.fail = true; }),

        row(&M::encodeGetEnableRequest, 1, "AS:1:0:Vb:GetEnableRequest:0:OK:\n"),
        row(&S::encodeGetEnableResponse, 2, "AS:2:0:Vb:GetEnableResponse:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&M::encodeSetEnableRequest, 3, "AS:3:0:Vb:SetEnableRequest:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&S::encodeSetEnableResponse, 4, "AS:4:0:Vb:SetEnableResponse:0:OK:\n"),
        row(&M::encodeSetChannelConfigRequest, 5,
            "AS:5:0:Vb:SetChannelConfigRequest:0:OK:"
            "<LS:1:3:1:2:3:4:5:6:7:8:9:10:11:12:13:14:15:16:17:18>:\n",
            [](auto& r) {
                r.channel = "LS";
                r.flag = true;
                r.number = 3;
                for (int i = 0; i < 18; ++i) {
                    r.params[i] = static_cast<float>(i + 1);
                }
            }),
        row(&M::encodeSetChannelConfigRequest, 6,
            "AS:6:0:Vb:SetChannelConfigRequest:0:OK:<RS:0:-1:-2:-1.75:-1.5:-1.25:-1:-0.75:-0.5:"
            "-0.25:0:0.25:0.5:0.75:1:1.25:1.5:1.75:2:2.25>:\n",
            [](auto& r) {
                r.channel = "RS";
                r.number = -1;
                for (int i = 0; i < 18; ++i) {
                    r.params[i] = 0.25f * static_cast<float>(i) - 2;
                }
            }),
        row(&S::encodeSetChannelConfigResponse, 7, "AS:7:0:Vb:SetChannelConfigResponse:0:OK:\n"),
    };
    expectRows(rows, 8);
}

TEST(VbMessages, MissingOrUnreadableFieldsDropTheRequest) {
    const std::string config = "AS:5:0:Vb:SetChannelConfigRequest:0:OK:<LS:1:3";
    const std::string floats17 = ":1:2:3:4:5:6:7:8:9:10:11:12:13:14:15:16:17";
    expectDropped({
        {config + floats17 + ":18>:\n", config + floats17 + ">:\n"},
        {config + floats17 + ":18>:\n", config + floats17 + ":x>:\n"},
        {config + floats17 + ":18>:\n",
         "AS:5:0:Vb:SetChannelConfigRequest:0:OK:<LS:1:three" + floats17 + ":18>:\n"},
        {"AS:3:0:Vb:SetEnableRequest:0:OK:<1>:\n", "AS:3:0:Vb:SetEnableRequest:0:OK:\n"},
    });
}

}  // namespace
