#pragma once

#include <string>

#include "VekCommonParams.h"
#include "VekFrameHub.h"

namespace vekserver {

class VekPlatformCommon {
public:
    static constexpr const char* kSlaveVersion = "A00020001";

    explicit VekPlatformCommon(vekprotocol::VekFrameHub* hub) : hub_(hub) {}

    void packVersionResponse(vekprotocol::VekParamCommonVersionRequest& request,
                             vekprotocol::VekParamCommonVersionResponse& response);
    void packFeatureResponse(vekprotocol::VekParamCommonFeatureRequest& request,
                             vekprotocol::VekParamCommonFeatureResponse& response);
    void packFileListResponse(vekprotocol::VekParamCommonFileListRequest& request,
                              vekprotocol::VekParamCommonFileListResponse& response);
    void packFileContentResponse(vekprotocol::VekParamCommonFileContentRequest& request,
                                 vekprotocol::VekParamCommonFileContentResponse& response);
    void packGetBypassResponse(vekprotocol::VekParamCommonGetBypassRequest& request,
                               vekprotocol::VekParamCommonGetBypassResponse& response);
    void packSetBypassResponse(vekprotocol::VekParamCommonSetBypassRequest& request,
                               vekprotocol::VekParamCommonSetBypassResponse& response);

private:
    vekprotocol::VekFrameHub* hub_;
    // The raw data of the last FileContentResponse points here, so it must outlive
    // the adapter call until the response has been sent.
    std::string fileContent_;
};

}  // namespace vekserver
