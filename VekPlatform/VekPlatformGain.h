#pragma once

#include <cstdint>

#include "VekFrameHub.h"
#include "VekGainParams.h"

namespace vekserver {

class VekPlatformGain {
public:
    explicit VekPlatformGain(vekprotocol::VekFrameHub* hub) : hub_(hub) {}

    void packGetMasterResponse(vekprotocol::VekParamGainGetMasterRequest& request,
                               vekprotocol::VekParamGainGetMasterResponse& response);
    void packSetMasterResponse(vekprotocol::VekParamGainSetMasterRequest& request,
                               vekprotocol::VekParamGainSetMasterResponse& response);
    void packGetChannelResponse(vekprotocol::VekParamGainGetChannelRequest& request,
                                vekprotocol::VekParamGainGetChannelResponse& response);
    void packSetChannelResponse(vekprotocol::VekParamGainSetChannelRequest& request,
                                vekprotocol::VekParamGainSetChannelResponse& response);
    void packGetFadeBalanceResponse(vekprotocol::VekParamGainGetFadeBalanceRequest& request,
                                    vekprotocol::VekParamGainGetFadeBalanceResponse& response);
    void packSetFadeBalanceResponse(vekprotocol::VekParamGainSetFadeBalanceRequest& request,
                                    vekprotocol::VekParamGainSetFadeBalanceResponse& response);

private:
    vekprotocol::VekFrameHub* hub_;
    // The library cannot report fade/balance, so reads answer the triple last set
    // successfully; a failed set keeps the previous one.
    int32_t lastFadeBalance_[3] = {0, 0, 15};
};

}  // namespace vekserver
