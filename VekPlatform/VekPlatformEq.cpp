#include "VekPlatformEq.h"

#include "VekAssert.h"
#include "VekEqualizer.h"
#include "VekLibrary.h"

namespace vekserver {

using namespace vekprotocol;

namespace {

// How an allocation failure names this adapter.
constexpr const char* kSource = "VekPlatform/VekPlatformEq";

}  // namespace

void VekPlatformEq::packGetEnableResponse(VekParamEqGetEnableRequest&,
                                          VekParamEqGetEnableResponse& response) {
    VekEqualizer::packGetEnable(hub_, response);
}

void VekPlatformEq::packSetEnableResponse(VekParamEqSetEnableRequest& request,
                                          VekParamEqSetEnableResponse& response) {
    VekEqualizer::packSetEnable(hub_, request, response);
}

// The fixed band count is the service's own answer: no library call, never a failure.
void VekPlatformEq::packGetBandCountResponse(VekParamEqGetBandCountRequest&,
                                             VekParamEqGetBandCountResponse& response) {
    VekLibrary::begin(response, hub_);
    for (int32_t& count : response.bandCount) {
        count = kFixedBandCount;
    }
}

void VekPlatformEq::packGetBandConfigResponse(VekParamEqGetBandConfigRequest& request,
                                              VekParamEqGetBandConfigResponse& response) {
    VekEqualizer::packGetBandConfig(hub_, VEK_ASSERT_SITE(kSource), request, response);
}

void VekPlatformEq::packSetBandConfigResponse(VekParamEqSetBandConfigRequest& request,
                                              VekParamEqSetBandConfigResponse& response) {
    VekEqualizer::packSetBandConfig(hub_, VEK_ASSERT_SITE(kSource), request, response);
}

}  // namespace vekserver
