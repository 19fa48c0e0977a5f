#pragma once

#include "VekPlatformSpeaker.h"
#include "VekSlaveService.h"
#include "VekSpeakerSlave.h"
#include "VekSpeakerSlaveCallbackItf.h"

namespace vekserver {

class VekSpeakerSlaveCallbackImpl
    : public VekSlaveService<vekprotocol::VekSpeakerSlaveCallbackItf, vekprotocol::VekSpeakerSlave,
                             VekPlatformSpeaker> {
public:
    using VekSlaveService::VekSlaveService;

    void onGetEnableRequest(vekprotocol::VekParamSpeakerGetEnableRequest& request) override;
    void onSetEnableRequest(vekprotocol::VekParamSpeakerSetEnableRequest& request) override;
    void onGetDelayRequest(vekprotocol::VekParamSpeakerGetDelayRequest& request) override;
    void onSetDelayRequest(vekprotocol::VekParamSpeakerSetDelayRequest& request) override;
    void onSetStylePatternRequest(
        vekprotocol::VekParamSpeakerSetStylePatternRequest& request) override;
    void onSetSinePatternRequest(
        vekprotocol::VekParamSpeakerSetSinePatternRequest& request) override;
};

}  // namespace vekserver
