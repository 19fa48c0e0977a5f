#pragma once

#include "VekGainParams.h"

namespace vekprotocol {

class VekGainMasterCallbackItf {
public:
    virtual ~VekGainMasterCallbackItf() = default;
    virtual void onGetMasterResponse(VekParamGainGetMasterResponse& response) = 0;
    virtual void onSetMasterResponse(VekParamGainSetMasterResponse& response) = 0;
    virtual void onGetChannelResponse(VekParamGainGetChannelResponse& response) = 0;
    virtual void onSetChannelResponse(VekParamGainSetChannelResponse& response) = 0;
    virtual void onGetFadeBalanceResponse(VekParamGainGetFadeBalanceResponse& response) = 0;
    virtual void onSetFadeBalanceResponse(VekParamGainSetFadeBalanceResponse& response) = 0;
};

}  // namespace vekprotocol
