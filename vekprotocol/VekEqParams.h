#pragma once

#include "VekEqV2Params.h"
#include "VekRecordHead.h"

namespace vekprotocol {

// Records of the fixed-band Eq feature: the EqV2 messages less SetBandCount, with
// the EqV2 field lists (the bodies of VekEqV2Params.h) under their own record names.

struct VekParamEqGetEnableRequest : VekRecordHead {
    static constexpr const char* kMessage = "GetEnableRequest";
};
struct VekParamEqGetEnableResponse : VekEqEnable {
    static constexpr const char* kMessage = "GetEnableResponse";
};
struct VekParamEqSetEnableRequest : VekEqEnable {
    static constexpr const char* kMessage = "SetEnableRequest";
};
struct VekParamEqSetEnableResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetEnableResponse";
};
struct VekParamEqGetBandCountRequest : VekRecordHead {
    static constexpr const char* kMessage = "GetBandCountRequest";
};
struct VekParamEqGetBandCountResponse : VekEqBandCount {
    static constexpr const char* kMessage = "GetBandCountResponse";
};
struct VekParamEqGetBandConfigRequest : VekEqBand {
    static constexpr const char* kMessage = "GetBandConfigRequest";
};
struct VekParamEqGetBandConfigResponse : VekEqBandConfig {
    static constexpr const char* kMessage = "GetBandConfigResponse";
};
struct VekParamEqSetBandConfigRequest : VekEqBandConfig {
    static constexpr const char* kMessage = "SetBandConfigRequest";
};
struct VekParamEqSetBandConfigResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetBandConfigResponse";
};

}  // namespace vekprotocol
