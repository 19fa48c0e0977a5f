#pragma once

#include "VekSpeakerParams.h"

namespace vekprotocol {

class VekSpeakerSlaveCallbackItf {
public:
    virtual ~VekSpeakerSlaveCallbackItf() = default;
    virtual void onGetEnableRequest(VekParamSpeakerGetEnableRequest& request) = 0;
    virtual void onSetEnableRequest(VekParamSpeakerSetEnableRequest& request) = 0;
    virtual void onGetDelayRequest(VekParamSpeakerGetDelayRequest& request) = 0;
    virtual void onSetDelayRequest(VekParamSpeakerSetDelayRequest& request) = 0;
    virtual void onSetStylePatternRequest(VekParamSpeakerSetStylePatternRequest& request) = 0;
    virtual void onSetSinePatternRequest(VekParamSpeakerSetSinePatternRequest& request) = 0;
};

}  // namespace vekprotocol
