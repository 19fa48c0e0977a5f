#pragma once

#include <cstdint>

#include "VekRecordHead.h"

namespace vekprotocol {

// Records of the Reverb feature. There is no SetEnable message: the state is read only.

struct VekParamReverbGetEnableRequest : VekRecordHead {
    static constexpr const char* kMessage = "GetEnableRequest";
};
struct VekParamReverbGetEnableResponse : VekRecordHead {
    static constexpr const char* kMessage = "GetEnableResponse";
    bool enable = false;
};
struct VekParamReverbGetModeRequest : VekRecordHead {
    static constexpr const char* kMessage = "GetModeRequest";
};
struct VekParamReverbGetModeResponse : VekRecordHead {
    static constexpr const char* kMessage = "GetModeResponse";
    int32_t mode = 0;
};
struct VekParamReverbSetModeRequest : VekRecordHead {
    static constexpr const char* kMessage = "SetModeRequest";
    int32_t mode = 0;
};
struct VekParamReverbSetModeResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetModeResponse";
};

template <class F>
void fields(F& f, VekParamReverbGetEnableResponse& r) {
    f("enable", r.enable);
}
template <class F>
void fields(F& f, VekParamReverbGetModeResponse& r) {
    f("mode", r.mode);
}
template <class F>
void fields(F& f, VekParamReverbSetModeRequest& r) {
    f("mode", r.mode);
}

}  // namespace vekprotocol
