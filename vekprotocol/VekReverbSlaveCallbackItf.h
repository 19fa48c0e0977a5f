#pragma once

#include "VekReverbParams.h"

namespace vekprotocol {

class VekReverbSlaveCallbackItf {
public:
    virtual ~VekReverbSlaveCallbackItf() = default;
    virtual void onGetEnableRequest(VekParamReverbGetEnableRequest& request) = 0;
    virtual void onGetModeRequest(VekParamReverbGetModeRequest& request) = 0;
    virtual void onSetModeRequest(VekParamReverbSetModeRequest& request) = 0;
};

}  // namespace vekprotocol
