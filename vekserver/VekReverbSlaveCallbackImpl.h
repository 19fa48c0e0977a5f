#pragma once

#include "VekPlatformReverb.h"
#include "VekReverbSlave.h"
#include "VekReverbSlaveCallbackItf.h"
#include "VekSlaveService.h"

namespace vekserver {

class VekReverbSlaveCallbackImpl
    : public VekSlaveService<vekprotocol::VekReverbSlaveCallbackItf, vekprotocol::VekReverbSlave,
                             VekPlatformReverb> {
public:
    using VekSlaveService::VekSlaveService;

    void onGetEnableRequest(vekprotocol::VekParamReverbGetEnableRequest& request) override;
    void onGetModeRequest(vekprotocol::VekParamReverbGetModeRequest& request) override;
    void onSetModeRequest(vekprotocol::VekParamReverbSetModeRequest& request) override;
};

}  // namespace vekserver
