#pragma once

#include <cstdint>
#include <string>

#include "VekRecordHead.h"

namespace vekprotocol {

// The Vb channel configuration, shared by GetChannelConfigResponse and
// SetChannelConfigRequest: 21 payload fields. number is 16 bits in the library but
// 32 on the wire; the order of params on the wire is not the library's.
struct VekVbChannelConfig : VekRecordHead {
    std::string channel;
    bool flag = false;
    int32_t number = 0;
    float params[18] = {};
};

template <class F>
void fields(F& f, VekVbChannelConfig& r) {
    f("channel", r.channel);
    f("flag", r.flag);
    f("number", r.number);
    f("params", r.params);
}

// Records of the Vb feature.

struct VekParamVbGetEnableRequest : VekRecordHead {
    static constexpr const char* kMessage = "GetEnableRequest";
};
struct VekParamVbGetEnableResponse : VekRecordHead {
    static constexpr const char* kMessage = "GetEnableResponse";
    bool enable = false;
};
struct VekParamVbSetEnableRequest : VekRecordHead {
    static constexpr const char* kMessage = "SetEnableRequest";
    bool enable = false;
};
struct VekParamVbSetEnableResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetEnableResponse";
};
struct VekParamVbGetChannelConfigRequest : VekRecordHead {
    static constexpr const char* kMessage = "GetChannelConfigRequest";
    std::string channel;
};
struct VekParamVbGetChannelConfigResponse : VekVbChannelConfig {
    static constexpr const char* kMessage = "GetChannelConfigResponse";
};
struct VekParamVbSetChannelConfigRequest : VekVbChannelConfig {
    static constexpr const char* kMessage = "SetChannelConfigRequest";
};
struct VekParamVbSetChannelConfigResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetChannelConfigResponse";
};

template <class F>
void fields(F& f, VekParamVbGetEnableResponse& r) {
    f("enable", r.enable);
}
template <class F>
void fields(F& f, VekParamVbSetEnableRequest& r) {
    f("enable", r.enable);
}
template <class F>
void fields(F& f, VekParamVbGetChannelConfigRequest& r) {
    f("channel", r.channel);
}

}  // namespace vekprotocol
