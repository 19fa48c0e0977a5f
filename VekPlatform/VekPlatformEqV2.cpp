#include "VekPlatformEqV2.h"

#include "VekAssert.h"
#include "VekEqualizer.h"

namespace vekserver {

using namespace vekprotocol;

namespace {

// How an allocation failure names this adapter.
constexpr const char* kSource = "VekPlatform/VekPlatformEqV2";

}  // namespace

void VekPlatformEqV2::packGetEnableResponse(VekParamEqV2GetEnableRequest&,
                                            VekParamEqV2GetEnableResponse& response) {
    VekEqualizer::packGetEnable(hub_, response);
}

void VekPlatformEqV2::packSetEnableResponse(VekParamEqV2SetEnableRequest& request,
                                            VekParamEqV2SetEnableResponse& response) {
    VekEqualizer::packSetEnable(hub_, request, response);
}

void VekPlatformEqV2::packGetBandCountResponse(VekParamEqV2GetBandCountRequest&,
                                               VekParamEqV2GetBandCountResponse& response) {
    VekEqualizer::packGetBandCount(hub_, VEK_ASSERT_SITE(kSource), response);
}

void VekPlatformEqV2::packSetBandCountResponse(VekParamEqV2SetBandCountRequest& request,
                                               VekParamEqV2SetBandCountResponse& response) {
    VekEqualizer::packSetBandCount(hub_, VEK_ASSERT_SITE(kSource), request, response);
}

void VekPlatformEqV2::packGetBandConfigResponse(VekParamEqV2GetBandConfigRequest& request,
                                                VekParamEqV2GetBandConfigResponse& response) {
    VekEqualizer::packGetBandConfig(hub_, VEK_ASSERT_SITE(kSource), request, response);
}

void VekPlatformEqV2::packSetBandConfigResponse(VekParamEqV2SetBandConfigRequest& request,
                                                VekParamEqV2SetBandConfigResponse& response) {
    VekEqualizer::packSetBandConfig(hub_, VEK_ASSERT_SITE(kSource), request, response);
}

}  // namespace vekserver
