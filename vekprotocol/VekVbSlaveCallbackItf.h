#pragma once

#include "VekVbParams.h"

namespace vekprotocol {

class VekVbSlaveCallbackItf {
public:
    virtual ~VekVbSlaveCallbackItf() = default;
    virtual void onGetEnableRequest(VekParamVbGetEnableRequest& request) = 0;
    virtual void onSetEnableRequest(VekParamVbSetEnableRequest& request) = 0;
    virtual void onGetChannelConfigRequest(VekParamVbGetChannelConfigRequest& request) = 0;
    virtual void onSetChannelConfigRequest(VekParamVbSetChannelConfigRequest& request) = 0;
};

}  // namespace vekprotocol
