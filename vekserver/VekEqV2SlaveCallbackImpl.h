#pragma once

#include "VekEqV2Slave.h"
#include "VekEqV2SlaveCallbackItf.h"
#include "VekPlatformEqV2.h"
#include "VekSlaveService.h"

namespace vekserver {

class VekEqV2SlaveCallbackImpl
    : public VekSlaveService<vekprotocol::VekEqV2SlaveCallbackItf, vekprotocol::VekEqV2Slave,
                             VekPlatformEqV2> {
public:
    using VekSlaveService::VekSlaveService;

    void onGetEnableRequest(vekprotocol::VekParamEqV2GetEnableRequest& request) override;
    void onSetEnableRequest(vekprotocol::VekParamEqV2SetEnableRequest& request) override;
    void onGetBandCountRequest(vekprotocol::VekParamEqV2GetBandCountRequest& request) override;
    void onSetBandCountRequest(vekprotocol::VekParamEqV2SetBandCountRequest& request) override;
    void onGetBandConfigRequest(vekprotocol::VekParamEqV2GetBandConfigRequest& request) override;
    void onSetBandConfigRequest(vekprotocol::VekParamEqV2SetBandConfigRequest& request) override;
};

}  // namespace vekserver
