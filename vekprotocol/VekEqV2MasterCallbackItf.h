#pragma once

#include "VekEqV2Params.h"

namespace vekprotocol {

class VekEqV2MasterCallbackItf {
public:
    virtual ~VekEqV2MasterCallbackItf() = default;
    virtual void onGetEnableResponse(VekParamEqV2GetEnableResponse& response) = 0;
    virtual void onSetEnableResponse(VekParamEqV2SetEnableResponse& response) = 0;
    virtual void onGetBandCountResponse(VekParamEqV2GetBandCountResponse& response) = 0;
    virtual void onSetBandCountResponse(VekParamEqV2SetBandCountResponse& response) = 0;
    virtual void onGetBandConfigResponse(VekParamEqV2GetBandConfigResponse& response) = 0;
    virtual void onSetBandConfigResponse(VekParamEqV2SetBandConfigResponse& response) = 0;
};

}  // namespace vekprotocol
