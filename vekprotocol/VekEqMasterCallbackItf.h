#pragma once

#include "VekEqParams.h"

namespace vekprotocol {

class VekEqMasterCallbackItf {
public:
    virtual ~VekEqMasterCallbackItf() = default;
    virtual void onGetEnableResponse(VekParamEqGetEnableResponse& response) = 0;
    virtual void onSetEnableResponse(VekParamEqSetEnableResponse& response) = 0;
    virtual void onGetBandCountResponse(VekParamEqGetBandCountResponse& response) = 0;
    virtual void onGetBandConfigResponse(VekParamEqGetBandConfigResponse& response) = 0;
    virtual void onSetBandConfigResponse(VekParamEqSetBandConfigResponse& response) = 0;
};

}  // namespace vekprotocol
