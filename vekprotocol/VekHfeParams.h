#pragma once

#include <string>

#include "VekRecordHead.h"

namespace vekprotocol {

// The Hfe channel configuration, shared by GetChannelConfigResponse and
// SetChannelConfigRequest. Switches and value travel uninterpreted, in the order of
// the library's record.
struct VekHfeChannelConfig : VekRecordHead {
    std::string channel;
    bool flag1 = false;
    bool flag2 = false;
    bool flag3 = false;
    float value = 0;
};

template <class F>
void fields(F& f, VekHfeChannelConfig& r) {
    f("channel", r.channel);
    f("flag1", r.flag1);
    f("flag2", r.flag2);
    f("flag3", r.flag3);
    f("value", r.value);
}

// Records of the Hfe feature.

struct VekParamHfeGetEnableRequest : VekRecordHead {
    static constexpr const char* kMessage = "GetEnableRequest";
};
struct VekParamHfeGetEnableResponse : VekRecordHead {
    static constexpr const char* kMessage = "GetEnableResponse";
    bool enable = false;
};
struct VekParamHfeSetEnableRequest : VekRecordHead {
    static constexpr const char* kMessage = "SetEnableRequest";
    bool enable = false;
};
struct VekParamHfeSetEnableResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetEnableResponse";
};
struct VekParamHfeGetChannelConfigRequest : VekRecordHead {
    static constexpr const char* kMessage = "GetChannelConfigRequest";
    std::string channel;
};
struct VekParamHfeGetChannelConfigResponse : VekHfeChannelConfig {
    static constexpr const char* kMessage = "GetChannelConfigResponse";
};
struct VekParamHfeSetChannelConfigRequest : VekHfeChannelConfig {
    static constexpr const char* kMessage = "SetChannelConfigRequest";
};
struct VekParamHfeSetChannelConfigResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetChannelConfigResponse";
};

template <class F>
void fields(F& f, VekParamHfeGetEnableResponse& r) {
    f("enable", r.enable);
}
template <class F>
void fields(F& f, VekParamHfeSetEnableRequest& r) {
    f("enable", r.enable);
}
template <class F>
void fields(F& f, VekParamHfeGetChannelConfigRequest& r) {
    f("channel", r.channel);
}

}  // namespace vekprotocol
