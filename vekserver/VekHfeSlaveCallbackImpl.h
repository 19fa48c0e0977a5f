#pragma once

#include "VekHfeSlave.h"
#include "VekHfeSlaveCallbackItf.h"
#include "VekPlatformHfe.h"
#include "VekSlaveService.h"

namespace vekserver {

class VekHfeSlaveCallbackImpl : public VekSlaveService<vekprotocol::VekHfeSlaveCallbackItf,
                                                       vekprotocol::VekHfeSlave, VekPlatformHfe> {
public:
    using VekSlaveService::VekSlaveService;

    void onGetEnableRequest(vekprotocol::VekParamHfeGetEnableRequest& request) override;
    void onSetEnableRequest(vekprotocol::VekParamHfeSetEnableRequest& request) override;
    void onGetChannelConfigRequest(
        vekprotocol::VekParamHfeGetChannelConfigRequest& request) override;
    void onSetChannelConfigRequest(
        vekprotocol::VekParamHfeSetChannelConfigRequest& request) override;
};

}  // namespace vekserver
