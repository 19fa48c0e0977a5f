#pragma once

#include "VekSpeakerParams.h"

namespace vekprotocol {

class VekSpeakerMasterCallbackItf {
public:
    virtual ~VekSpeakerMasterCallbackItf() = default;
    virtual void onGetEnableResponse(VekParamSpeakerGetEnableResponse& response) = 0;
    virtual void onSetEnableResponse(VekParamSpeakerSetEnableResponse& response) = 0;
    virtual void onGetDelayResponse(VekParamSpeakerGetDelayResponse& response) = 0;
    virtual void onSetDelayResponse(VekParamSpeakerSetDelayResponse& response) = 0;
    virtual void onSetStylePatternResponse(VekParamSpeakerSetStylePatternResponse& response) = 0;
    virtual void onSetSinePatternResponse(VekParamSpeakerSetSinePatternResponse& response) = 0;
};

}  // namespace vekprotocol
