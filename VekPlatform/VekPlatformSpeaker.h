#pragma once

#include "VekFrameHub.h"
#include "VekSpeakerParams.h"

namespace vekserver {

class VekPlatformSpeaker {
public:
    explicit VekPlatformSpeaker(vekprotocol::VekFrameHub* hub) : hub_(hub) {}

    void packGetEnableResponse(vekprotocol::VekParamSpeakerGetEnableRequest& request,
                               vekprotocol::VekParamSpeakerGetEnableResponse& response);
    void packSetEnableResponse(vekprotocol::VekParamSpeakerSetEnableRequest& request,
                               vekprotocol::VekParamSpeakerSetEnableResponse& response);
    void packGetDelayResponse(vekprotocol::VekParamSpeakerGetDelayRequest& request,
                              vekprotocol::VekParamSpeakerGetDelayResponse& response);
    void packSetDelayResponse(vekprotocol::VekParamSpeakerSetDelayRequest& request,
                              vekprotocol::VekParamSpeakerSetDelayResponse& response);
    void packSetStylePatternResponse(vekprotocol::VekParamSpeakerSetStylePatternRequest& request,
                                     vekprotocol::VekParamSpeakerSetStylePatternResponse& response);
    void packSetSinePatternResponse(vekprotocol::VekParamSpeakerSetSinePatternRequest& request,
                                    vekprotocol::VekParamSpeakerSetSinePatternResponse& response);

private:
    vekprotocol::VekFrameHub* hub_;
};

}  // namespace vekserver
