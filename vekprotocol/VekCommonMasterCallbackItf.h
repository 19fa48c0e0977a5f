#pragma once

#include "VekCommonParams.h"

namespace vekprotocol {

class VekCommonMasterCallbackItf {
public:
    virtual ~VekCommonMasterCallbackItf() = default;
    virtual void onVersionResponse(VekParamCommonVersionResponse& response) = 0;
    virtual void onFeatureResponse(VekParamCommonFeatureResponse& response) = 0;
    virtual void onFileListResponse(VekParamCommonFileListResponse& response) = 0;
    virtual void onFileContentResponse(VekParamCommonFileContentResponse& response) = 0;
    virtual void onGetBypassResponse(VekParamCommonGetBypassResponse& response) = 0;
    virtual void onSetBypassResponse(VekParamCommonSetBypassResponse& response) = 0;
};

}  // namespace vekprotocol
