#pragma once

#include "VekEqSlave.h"
#include "VekEqSlaveCallbackItf.h"
#include "VekPlatformEq.h"
#include "VekSlaveService.h"

namespace vekserver {

class VekEqSlaveCallbackImpl : public VekSlaveService<vekprotocol::VekEqSlaveCallbackItf,
                                                      vekprotocol::VekEqSlave, VekPlatformEq> {
public:
    using VekSlaveService::VekSlaveService;

    void onGetEnableRequest(vekprotocol::VekParamEqGetEnableRequest& request) override;
    void onSetEnableRequest(vekprotocol::VekParamEqSetEnableRequest& request) override;
    void onGetBandCountRequest(vekprotocol::VekParamEqGetBandCountRequest& request) override;
    void onGetBandConfigRequest(vekprotocol::VekParamEqGetBandConfigRequest& request) override;
    void onSetBandConfigRequest(vekprotocol::VekParamEqSetBandConfigRequest& request) override;
};

}  // namespace vekserver
