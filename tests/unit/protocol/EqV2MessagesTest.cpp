#include <gtest/gtest.h>

#include <string>

#include "FeatureTestSupport.h"

using namespace vektest;

namespace {

// The documented examples, then every message with values of each field type.
TEST(EqV2Messages, EveryMessageTravelsBothWays) {
    using S = VekEqV2Slave;
    using M = VekEqV2Master;
    const std::vector<Row> rows = {
        row(&S::encodeGetBandCountResponse, 1,
            "AS:1:0:EqV2:GetBandCountResponse:0:OK:<10:10:5:5:3:0>:\n",
            [](auto& r) {
                set(r.bandCount, {10, 10, 5, 5, 3, 0});
            }),
        // A failed band config keeps its block, the empty channel name first.
        row(&S::encodeGetBandConfigResponse, 2,
            "AS:2:0:EqV2:GetBandConfigResponse:0:NG:<:0:0:0:0:0:0:0>:\n",
            [](auto& r) { r.fail = true; }),
        row(&M::encodeSetBandConfigRequest, 3,
            "AS:3:0:EqV2:SetBandConfigRequest:0:OK:<CF:7:2:1000:-3.5:0.707:0:1>:\n",
            [](auto& r) {
                r.channel = "CF";
                r.band = 7;
                r.value1 = 2;
                r.value2 = 1000;
                r.value3 = -3.5f;
                r.value4 = 0.707f;
                r.value5 = 0;
                r.value6 = 1;
            }),
        row(&M::encodeSetEnableRequest, 4, "AS:4:0:EqV2:SetEnableRequest:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&M::encodeGetBandConfigRequest, 5,
            "AS:5:0:EqV2:GetBandConfigRequest:0:OK:<lf:4294967295>:\n",
            [](auto& r) {
                r.channel = "lf";
                r.band = 4294967295u;
            }),

        row(&M::encodeGetEnableRequest, 6, "AS:6:0:EqV2:GetEnableRequest:0:OK:\n"),
        row(&S::encodeGetEnableResponse, 7, "AS:7:0:EqV2:GetEnableResponse:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&S::encodeSetEnableResponse, 8, "AS:8:0:EqV2:SetEnableResponse:0:OK:\n"),
        row(&M::encodeGetBandCountRequest, 9, "AS:9:0:EqV2:GetBandCountRequest:0:OK:\n"),
        row(&M::encodeSetBandCountRequest, 10,
            "AS:10:0:EqV2:SetBandCountRequest:0:OK:<31:1:0:-1:2147483647:16>:\n",
            [](auto& r) {
                set(r.bandCount, {31, 1, 0, -1, 2147483647, 16});
            }),
        row(&S::encodeSetBandCountResponse, 11, "AS:11:0:EqV2:SetBandCountResponse:0:NG:\n",
            [](auto& r) { r.fail = true; }),
        row(&S::encodeGetBandConfigResponse, 12,
            "AS:12:0:EqV2:GetBandConfigResponse:0:OK:"
            "<L1:30:-4:65535:1e-05:-12.25:-2147483648:9>:\n",
            [](auto& r) {
                r.channel = "L1";
                r.band = 30;
                r.value1 = -4;
                r.value2 = 65535;
                r.value3 = 1e-05f;
                r.value4 = -12.25f;
                r.value5 = -2147483647 - 1;
                r.value6 = 9;
            }),
        row(&S::encodeSetBandConfigResponse, 13, "AS:13:0:EqV2:SetBandConfigResponse:0:OK:\n"),
    };
    expectRows(rows, 12);
}

TEST(EqV2Messages, EnableIsTrueExactlyWhenItReadsAsOne) {
    FeatureLink link;
    const auto expectEnable = [&](const char* field, bool enable) {
        EXPECT_EQ(
            link.toSlave(std::string("AS:4:0:EqV2:SetEnableRequest:0:OK:<") + field + ">:\n"),
            arrives<VekParamEqV2SetEnableRequest>("EqV2", 4, [&](auto& r) { r.enable = enable; }))
            << field;
    };
    expectEnable("1", true);
    expectEnable("1x", true);
    expectEnable(" 1", true);
    expectEnable("2", false);
    expectEnable("0", false);
}

TEST(EqV2Messages, MissingOrUnreadableFieldsDropTheRequest) {
    const std::string config = "AS:3:0:EqV2:SetBandConfigRequest:0:OK:";
    const std::string counts = "AS:10:0:EqV2:SetBandCountRequest:0:OK:";
    expectDropped({
        {config + "<CF:7:2:1000:-3.5:0.707:0:1>:\n", config + "<CF:7:2:1000:-3.5:0.707:0>:\n"},
        {config + "<CF:7:2:1000:-3.5:0.707:0:1>:\n", config + "<CF:x:2:1000:-3.5:0.707:0:1>:\n"},
        {config + "<CF:7:2:1000:-3.5:0.707:0:1>:\n", config + "<CF:7:2:1000:-:0.707:0:1>:\n"},
        {config + "<CF:4294967295:2:1000:-3.5:0.707:0:1>:\n",
         config + "<CF:4294967296:2:1000:-3.5:0.707:0:1>:\n"},
        {counts + "<1:2:3:4:5:6>:\n", counts + "<1:2:3:4:5>:\n"},
        {"AS:5:0:EqV2:GetBandConfigRequest:0:OK:<LF:1>:\n",
         "AS:5:0:EqV2:GetBandConfigRequest:0:OK:<LF>:\n"},
        {"AS:4:0:EqV2:SetEnableRequest:0:OK:<1>:\n", "AS:4:0:EqV2:SetEnableRequest:0:OK:<on>:\n"},
    });
}

}  // namespace
