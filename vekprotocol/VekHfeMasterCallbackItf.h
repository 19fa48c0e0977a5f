#pragma once

#include "VekHfeParams.h"

namespace vekprotocol {

class VekHfeMasterCallbackItf {
public:
    virtual ~VekHfeMasterCallbackItf() = default;
    virtual void onGetEnableResponse(VekParamHfeGetEnableResponse& response) = 0;
    virtual void onSetEnableResponse(VekParamHfeSetEnableResponse& response) = 0;
    virtual void onGetChannelConfigResponse(VekParamHfeGetChannelConfigResponse& response) = 0;
    virtual void onSetChannelConfigResponse(VekParamHfeSetChannelConfigResponse& response) = 0;
};

}  // namespace vekprotocol
