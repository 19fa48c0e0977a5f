#pragma once

#include "VekHfeParams.h"

namespace vekprotocol {

class VekHfeSlaveCallbackItf {
public:
    virtual ~VekHfeSlaveCallbackItf() = default;
    virtual void onGetEnableRequest(VekParamHfeGetEnableRequest& request) = 0;
    virtual void onSetEnableRequest(VekParamHfeSetEnableRequest& request) = 0;
    virtual void onGetChannelConfigRequest(VekParamHfeGetChannelConfigRequest& request) = 0;
    virtual void onSetChannelConfigRequest(VekParamHfeSetChannelConfigRequest& request) = 0;
};

}  // namespace vekprotocol
