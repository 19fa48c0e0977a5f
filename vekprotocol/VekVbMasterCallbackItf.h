#pragma once

#include "VekVbParams.h"

namespace vekprotocol {

class VekVbMasterCallbackItf {
public:
    virtual ~VekVbMasterCallbackItf() = default;
    virtual void onGetEnableResponse(VekParamVbGetEnableResponse& response) = 0;
    virtual void onSetEnableResponse(VekParamVbSetEnableResponse& response) = 0;
    virtual void onGetChannelConfigResponse(VekParamVbGetChannelConfigResponse& response) = 0;
    virtual void onSetChannelConfigResponse(VekParamVbSetChannelConfigResponse& response) = 0;
};

}  // namespace vekprotocol
