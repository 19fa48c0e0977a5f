#pragma once

#include "VekPlatformVb.h"
#include "VekSlaveService.h"
#include "VekVbSlave.h"
#include "VekVbSlaveCallbackItf.h"

namespace vekserver {

class VekVbSlaveCallbackImpl : public VekSlaveService<vekprotocol::VekVbSlaveCallbackItf,
                                                      vekprotocol::VekVbSlave, VekPlatformVb> {
public:
    using VekSlaveService::VekSlaveService;

    void onGetEnableRequest(vekprotocol::VekParamVbGetEnableRequest& request) override;
    void onSetEnableRequest(vekprotocol::VekParamVbSetEnableRequest& request) override;
    void onGetChannelConfigRequest(
        vekprotocol::VekParamVbGetChannelConfigRequest& request) override;
    void onSetChannelConfigRequest(
        vekprotocol::VekParamVbSetChannelConfigRequest& request) override;
};

}  // namespace vekserver
