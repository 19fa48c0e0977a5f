#include <gtest/gtest.h>

#include <string>

#include "FeatureTestSupport.h"

using namespace vektest;

namespace {

// The documented example, then every message: the EqV2 fields under the name "Eq".
TEST(EqMessages, EveryMessageTravelsBothWays) {
    using S = VekEqSlave;
    using M = VekEqMaster;
    const std::vector<Row> rows = {
        row(&S::encodeGetBandCountResponse, 4,
            "AS:4:0:Eq:GetBandCountResponse:0:OK:<20:20:20:20:20:20>:\n",
            [](auto& r) {
                set(r.bandCount, {20, 20, 20, 20, 20, 20});
            }),

        row(&M::encodeGetEnableRequest, 1, "AS:1:0:Eq:GetEnableRequest:0:OK:\n"),
        row(&S::encodeGetEnableResponse, 2, "AS:2:0:Eq:GetEnableResponse:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&M::encodeSetEnableRequest, 3, "AS:3:0:Eq:SetEnableRequest:0:OK:<0>:\n"),
        row(&S::encodeSetEnableResponse, 5, "AS:5:0:Eq:SetEnableResponse:0:OK:\n"),
        row(&M::encodeGetBandCountRequest, 6, "AS:6:0:Eq:GetBandCountRequest:0:OK:\n"),
        row(&M::encodeGetBandConfigRequest, 7, "AS:7:0:Eq:GetBandConfigRequest:0:OK:<RS:19>:\n",
            [](auto& r) {
                r.channel = "RS";
                r.band = 19;
            }),
        row(&S::encodeGetBandConfigResponse, 8,
            "AS:8:0:Eq:GetBandConfigResponse:0:OK:<RS:19:3:16000:6.5:0.5:-1:2>:\n",
            [](auto& r) {
                r.channel = "RS";
                r.band = 19;
                r.value1 = 3;
                r.value2 = 16000;
                r.value3 = 6.5f;
                r.value4 = 0.5f;
                r.value5 = -1;
                r.value6 = 2;
            }),
        row(&S::encodeGetBandConfigResponse, 9,
            "AS:9:0:Eq:GetBandConfigResponse:0:NG:<:0:0:0:0:0:0:0>:\n",
            [](auto& r) { r.fail = true; }),
        row(&M::encodeSetBandConfigRequest, 10,
            "AS:10:0:Eq:SetBandConfigRequest:0:OK:<LF:0:1:31:-0.125:1.41421:7:-8>:\n",
            [](auto& r) {
                r.channel = "LF";
                r.band = 0;
                r.value1 = 1;
                r.value2 = 31;
                r.value3 = -0.125f;
                r.value4 = 1.41421f;
                r.value5 = 7;
                r.value6 = -8;
            }),
        row(&S::encodeSetBandConfigResponse, 11, "AS:11:0:Eq:SetBandConfigResponse:0:OK:\n"),
    };
    expectRows(rows, 10);
}

TEST(EqMessages, SetBandCountIsNotAnEqMessage) {
    expectDropped({
        {"AS:1:0:EqV2:SetBandCountRequest:0:OK:<20:20:20:20:20:20>:\n",
         "AS:1:0:Eq:SetBandCountRequest:0:OK:<20:20:20:20:20:20>:\n"},
        {"AS:2:0:Eq:SetBandConfigRequest:0:OK:<LF:0:1:31:-0.125:1.41421:7:-8>:\n",
         "AS:2:0:Eq:SetBandConfigRequest:0:OK:<LF:0:1:31:-0.125:1.41421:7>:\n"},
    });
}

}  // namespace
