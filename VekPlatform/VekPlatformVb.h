#pragma once

#include "VekFrameHub.h"
#include "VekVbParams.h"

namespace vekserver {

class VekPlatformVb {
public:
    explicit VekPlatformVb(vekprotocol::VekFrameHub* hub) : hub_(hub) {}

    void packGetEnableResponse(vekprotocol::VekParamVbGetEnableRequest& request,
                               vekprotocol::VekParamVbGetEnableResponse& response);
    void packSetEnableResponse(vekprotocol::VekParamVbSetEnableRequest& request,
                               vekprotocol::VekParamVbSetEnableResponse& response);
    void packGetChannelConfigResponse(vekprotocol::VekParamVbGetChannelConfigRequest& request,
                                      vekprotocol::VekParamVbGetChannelConfigResponse& response);
    void packSetChannelConfigResponse(vekprotocol::VekParamVbSetChannelConfigRequest& request,
                                      vekprotocol::VekParamVbSetChannelConfigResponse& response);

private:
    vekprotocol::VekFrameHub* hub_;
};

}  // namespace vekserver
