#include <gtest/gtest.h>

#include <string>

#include "FeatureTestSupport.h"

using namespace vektest;

namespace {

// Every documented example, then the negative mode and the false enable.
TEST(ReverbMessages, EveryMessageTravelsBothWays) {
    using S = VekReverbSlave;
    using M = VekReverbMaster;
    const std::vector<Row> rows = {
        row(&M::encodeGetEnableRequest, 1, "AS:1:0:Reverb:GetEnableRequest:0:OK:\n"),
        row(&S::encodeGetEnableResponse, 30, "AS:30:0:Reverb:GetEnableResponse:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&M::encodeSetModeRequest, 2, "AS:2:0:Reverb:SetModeRequest:0:OK:<3>:\n",
            [](auto& r) { r.mode = 3; }),
        row(&S::encodeSetModeResponse, 31, "AS:31:0:Reverb:SetModeResponse:0:OK:\n"),
        row(&M::encodeGetModeRequest, 3, "AS:3:0:Reverb:GetModeRequest:0:OK:\n"),
        row(&S::encodeGetModeResponse, 32, "AS:32:0:Reverb:GetModeResponse:0:OK:<3>:\n",
            [](auto& r) { r.mode = 3; }),

        row(&M::encodeSetModeRequest, 4, "AS:4:0:Reverb:SetModeRequest:0:OK:<-2>:\n",
            [](auto& r) { r.mode = -2; }),
        row(&S::encodeGetModeResponse, 33, "AS:33:0:Reverb:GetModeResponse:0:OK:<-2>:\n",
            [](auto& r) { r.mode = -2; }),
        row(&S::encodeGetEnableResponse, 34, "AS:34:0:Reverb:GetEnableResponse:0:OK:<0>:\n"),
        row(&S::encodeGetModeResponse, 35, "AS:35:0:Reverb:GetModeResponse:0:NG:<7>:\n",
            [](auto& r) {
                r.fail = true;
                r.mode = 7;
            }),
    };
    expectRows(rows, 6);
}

TEST(ReverbMessages, UnknownOrIncompleteRequestsAreDropped) {
    expectDropped({
        // Reverb has no SetEnable message.
        {"AS:1:0:Hfe:SetEnableRequest:0:OK:<1>:\n", "AS:1:0:Reverb:SetEnableRequest:0:OK:<1>:\n"},
        {"AS:2:0:Reverb:SetModeRequest:0:OK:<3>:\n", "AS:2:0:Reverb:SetModeRequest:0:OK:\n"},
        {"AS:2:0:Reverb:SetModeRequest:0:OK:<3>:\n",
         "AS:2:0:Reverb:SetModeRequest:0:OK:<three>:\n"},
        {"AS:2:0:Reverb:SetModeRequest:0:OK:<-2147483648>:\n",
         "AS:2:0:Reverb:SetModeRequest:0:OK:<-2147483649>:\n"},
        {"AS:3:0:Reverb:GetModeRequest:0:OK:\n", "AS:3:0:Reverb:getModeRequest:0:OK:\n"},
    });
}

}  // namespace
