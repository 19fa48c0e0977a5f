#pragma once

#include "VekFrameHub.h"
#include "VekHfeParams.h"

namespace vekserver {

class VekPlatformHfe {
public:
    explicit VekPlatformHfe(vekprotocol::VekFrameHub* hub) : hub_(hub) {}

    void packGetEnableResponse(vekprotocol::VekParamHfeGetEnableRequest& request,
                               vekprotocol::VekParamHfeGetEnableResponse& response);
    void packSetEnableResponse(vekprotocol::VekParamHfeSetEnableRequest& request,
                               vekprotocol::VekParamHfeSetEnableResponse& response);
    void packGetChannelConfigResponse(vekprotocol::VekParamHfeGetChannelConfigRequest& request,
                                      vekprotocol::VekParamHfeGetChannelConfigResponse& response);
    void packSetChannelConfigResponse(vekprotocol::VekParamHfeSetChannelConfigRequest& request,
                                      vekprotocol::VekParamHfeSetChannelConfigResponse& response);

private:
    vekprotocol::VekFrameHub* hub_;
};

}  // namespace vekserver
