#pragma once

#include <cstdint>

#include "VekEqParams.h"
#include "VekFrameHub.h"

namespace vekserver {

class VekPlatformEq {
public:
    // Every channel has this many bands in fixed-band mode.
    static constexpr int32_t kFixedBandCount = 20;

    explicit VekPlatformEq(vekprotocol::VekFrameHub* hub) : hub_(hub) {}

    void packGetEnableResponse(vekprotocol::VekParamEqGetEnableRequest& request,
                               vekprotocol::VekParamEqGetEnableResponse& response);
    void packSetEnableResponse(vekprotocol::VekParamEqSetEnableRequest& request,
                               vekprotocol::VekParamEqSetEnableResponse& response);
    void packGetBandCountResponse(vekprotocol::VekParamEqGetBandCountRequest& request,
                                  vekprotocol::VekParamEqGetBandCountResponse& response);
    void packGetBandConfigResponse(vekprotocol::VekParamEqGetBandConfigRequest& request,
                                   vekprotocol::VekParamEqGetBandConfigResponse& response);
    void packSetBandConfigResponse(vekprotocol::VekParamEqSetBandConfigRequest& request,
                                   vekprotocol::VekParamEqSetBandConfigResponse& response);

private:
    vekprotocol::VekFrameHub* hub_;
};

}  // namespace vekserver
