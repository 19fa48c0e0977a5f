#pragma once

#include "VekGainParams.h"

namespace vekprotocol {

class VekGainSlaveCallbackItf {
public:
    virtual ~VekGainSlaveCallbackItf() = default;
    virtual void onGetMasterRequest(VekParamGainGetMasterRequest& request) = 0;
    virtual void onSetMasterRequest(VekParamGainSetMasterRequest& request) = 0;
    virtual void onGetChannelRequest(VekParamGainGetChannelRequest& request) = 0;
    virtual void onSetChannelRequest(VekParamGainSetChannelRequest& request) = 0;
    virtual void onGetFadeBalanceRequest(VekParamGainGetFadeBalanceRequest& request) = 0;
    virtual void onSetFadeBalanceRequest(VekParamGainSetFadeBalanceRequest& request) = 0;
};

}  // namespace vekprotocol
