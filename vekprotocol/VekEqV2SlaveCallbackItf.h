#pragma once

#include "VekEqV2Params.h"

namespace vekprotocol {

class VekEqV2SlaveCallbackItf {
public:
    virtual ~VekEqV2SlaveCallbackItf() = default;
    virtual void onGetEnableRequest(VekParamEqV2GetEnableRequest& request) = 0;
    virtual void onSetEnableRequest(VekParamEqV2SetEnableRequest& request) = 0;
    virtual void onGetBandCountRequest(VekParamEqV2GetBandCountRequest& request) = 0;
    virtual void onSetBandCountRequest(VekParamEqV2SetBandCountRequest& request) = 0;
    virtual void onGetBandConfigRequest(VekParamEqV2GetBandConfigRequest& request) = 0;
    virtual void onSetBandConfigRequest(VekParamEqV2SetBandConfigRequest& request) = 0;
};

}  // namespace vekprotocol
