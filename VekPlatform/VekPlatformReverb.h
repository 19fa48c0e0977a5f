#pragma once

#include <cstdint>

#include "VekFrameHub.h"
#include "VekReverbParams.h"

namespace vekserver {

class VekPlatformReverb {
public:
    explicit VekPlatformReverb(vekprotocol::VekFrameHub* hub) : hub_(hub) {}

    void packGetEnableResponse(vekprotocol::VekParamReverbGetEnableRequest& request,
                               vekprotocol::VekParamReverbGetEnableResponse& response);
    void packGetModeResponse(vekprotocol::VekParamReverbGetModeRequest& request,
                             vekprotocol::VekParamReverbGetModeResponse& response);
    void packSetModeResponse(vekprotocol::VekParamReverbSetModeRequest& request,
                             vekprotocol::VekParamReverbSetModeResponse& response);

private:
    vekprotocol::VekFrameHub* hub_;
    // The library cannot report the mode, so reads answer the one last set successfully.
    int32_t lastReverbMode_ = 0;
};

}  // namespace vekserver
