#pragma once

#include "VekEqV2Params.h"
#include "VekFrameHub.h"

namespace vekserver {

class VekPlatformEqV2 {
public:
    explicit VekPlatformEqV2(vekprotocol::VekFrameHub* hub) : hub_(hub) {}

    void packGetEnableResponse(vekprotocol::VekParamEqV2GetEnableRequest& request,
                               vekprotocol::VekParamEqV2GetEnableResponse& response);
    void packSetEnableResponse(vekprotocol::VekParamEqV2SetEnableRequest& request,
                               vekprotocol::VekParamEqV2SetEnableResponse& response);
    void packGetBandCountResponse(vekprotocol::VekParamEqV2GetBandCountRequest& request,
                                  vekprotocol::VekParamEqV2GetBandCountResponse& response);
    void packSetBandCountResponse(vekprotocol::VekParamEqV2SetBandCountRequest& request,
                                  vekprotocol::VekParamEqV2SetBandCountResponse& response);
    void packGetBandConfigResponse(vekprotocol::VekParamEqV2GetBandConfigRequest& request,
                                   vekprotocol::VekParamEqV2GetBandConfigResponse& response);
    void packSetBandConfigResponse(vekprotocol::VekParamEqV2SetBandConfigRequest& request,
                                   vekprotocol::VekParamEqV2SetBandConfigResponse& response);

private:
    vekprotocol::VekFrameHub* hub_;
};

}  // namespace vekserver
