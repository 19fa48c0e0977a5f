#pragma once

#include "VekCommonParams.h"

namespace vekprotocol {

class VekCommonSlaveCallbackItf {
public:
    virtual ~VekCommonSlaveCallbackItf() = default;
    virtual void onVersionRequest(VekParamCommonVersionRequest& request) = 0;
    virtual void onFeatureRequest(VekParamCommonFeatureRequest& request) = 0;
    virtual void onFileListRequest(VekParamCommonFileListRequest& request) = 0;
    virtual void onFileContentRequest(VekParamCommonFileContentRequest& request) = 0;
    virtual void onGetBypassRequest(VekParamCommonGetBypassRequest& request) = 0;
    virtual void onSetBypassRequest(VekParamCommonSetBypassRequest& request) = 0;
};

}  // namespace vekprotocol
