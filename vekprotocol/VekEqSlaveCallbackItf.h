#pragma once

#include "VekEqParams.h"

namespace vekprotocol {

class VekEqSlaveCallbackItf {
public:
    virtual ~VekEqSlaveCallbackItf() = default;
    virtual void onGetEnableRequest(VekParamEqGetEnableRequest& request) = 0;
    virtual void onSetEnableRequest(VekParamEqSetEnableRequest& request) = 0;
    virtual void onGetBandCountRequest(VekParamEqGetBandCountRequest& request) = 0;
    virtual void onGetBandConfigRequest(VekParamEqGetBandConfigRequest& request) = 0;
    virtual void onSetBandConfigRequest(VekParamEqSetBandConfigRequest& request) = 0;
};

}  // namespace vekprotocol
