#pragma once

#include "VekReverbParams.h"

namespace vekprotocol {

class VekReverbMasterCallbackItf {
public:
    virtual ~VekReverbMasterCallbackItf() = default;
    virtual void onGetEnableResponse(VekParamReverbGetEnableResponse& response) = 0;
    virtual void onGetModeResponse(VekParamReverbGetModeResponse& response) = 0;
    virtual void onSetModeResponse(VekParamReverbSetModeResponse& response) = 0;
};

}  // namespace vekprotocol
