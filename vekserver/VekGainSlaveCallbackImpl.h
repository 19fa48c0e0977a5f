#pragma once

#include "VekGainSlave.h"
#include "VekGainSlaveCallbackItf.h"
#include "VekPlatformGain.h"
#include "VekSlaveService.h"

namespace vekserver {

class VekGainSlaveCallbackImpl
    : public VekSlaveService<vekprotocol::VekGainSlaveCallbackItf, vekprotocol::VekGainSlave,
                             VekPlatformGain> {
public:
    using VekSlaveService::VekSlaveService;

    void onGetMasterRequest(vekprotocol::VekParamGainGetMasterRequest& request) override;
    void onSetMasterRequest(vekprotocol::VekParamGainSetMasterRequest& request) override;
    void onGetChannelRequest(vekprotocol::VekParamGainGetChannelRequest& request) override;
    void onSetChannelRequest(vekprotocol::VekParamGainSetChannelRequest& request) override;
    void onGetFadeBalanceRequest(vekprotocol::VekParamGainGetFadeBalanceRequest& request) override;
    void onSetFadeBalanceRequest(vekprotocol::VekParamGainSetFadeBalanceRequest& request) override;
};

}  // namespace vekserver
