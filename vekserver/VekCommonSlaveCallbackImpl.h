#pragma once

#include "VekCommonSlave.h"
#include "VekCommonSlaveCallbackItf.h"
#include "VekPlatformCommon.h"
#include "VekSlaveService.h"

namespace vekserver {

class VekCommonSlaveCallbackImpl
    : public VekSlaveService<vekprotocol::VekCommonSlaveCallbackItf, vekprotocol::VekCommonSlave,
                             VekPlatformCommon> {
public:
    using VekSlaveService::VekSlaveService;

    void onVersionRequest(vekprotocol::VekParamCommonVersionRequest& request) override;
    void onFeatureRequest(vekprotocol::VekParamCommonFeatureRequest& request) override;
    void onFileListRequest(vekprotocol::VekParamCommonFileListRequest& request) override;
    void onFileContentRequest(vekprotocol::VekParamCommonFileContentRequest& request) override;
    void onGetBypassRequest(vekprotocol::VekParamCommonGetBypassRequest& request) override;
    void onSetBypassRequest(vekprotocol::VekParamCommonSetBypassRequest& request) override;
};

}  // namespace vekserver
