#pragma once

#include <cstdint>

#include "VekRecordHead.h"

namespace vekprotocol {

// Records of the Gain feature. Six-element arrays follow the channel order
// LF, RF, LS, RS, CF, L1.

struct VekParamGainGetMasterRequest : VekRecordHead {
    static constexpr const char* kMessage = "GetMasterRequest";
};
struct VekParamGainGetMasterResponse : VekRecordHead {
    static constexpr const char* kMessage = "GetMasterResponse";
    float masterGain = 0;
};
struct VekParamGainSetMasterRequest : VekRecordHead {
    static constexpr const char* kMessage = "SetMasterRequest";
    float masterGain = 0;
};
struct VekParamGainSetMasterResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetMasterResponse";
};
struct VekParamGainGetChannelRequest : VekRecordHead {
    static constexpr const char* kMessage = "GetChannelRequest";
};
struct VekParamGainGetChannelResponse : VekRecordHead {
    static constexpr const char* kMessage = "GetChannelResponse";
    float channelGain[6] = {};
};
struct VekParamGainSetChannelRequest : VekRecordHead {
    static constexpr const char* kMessage = "SetChannelRequest";
    float channelGain[6] = {};
};
struct VekParamGainSetChannelResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetChannelResponse";
};
struct VekParamGainGetFadeBalanceRequest : VekRecordHead {
    static constexpr const char* kMessage = "GetFadeBalanceRequest";
};
// The third element is unsigned on the wire; the record keeps its bit pattern signed.
struct VekParamGainGetFadeBalanceResponse : VekRecordHead {
    static constexpr const char* kMessage = "GetFadeBalanceResponse";
    int32_t fadeBalance[3] = {};
};
struct VekParamGainSetFadeBalanceRequest : VekRecordHead {
    static constexpr const char* kMessage = "SetFadeBalanceRequest";
    int32_t fadeBalance[3] = {};
};
struct VekParamGainSetFadeBalanceResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetFadeBalanceResponse";
};

template <class F>
void fields(F& f, VekParamGainGetMasterResponse& r) {
    f("masterGain", r.masterGain);
}
template <class F>
void fields(F& f, VekParamGainSetMasterRequest& r) {
    f("masterGain", r.masterGain);
}
template <class F>
void fields(F& f, VekParamGainGetChannelResponse& r) {
    f("channelGain", r.channelGain);
}
template <class F>
void fields(F& f, VekParamGainSetChannelRequest& r) {
    f("channelGain", r.channelGain);
}
template <class F>
void fields(F& f, VekParamGainGetFadeBalanceResponse& r) {
    f("fadeBalance", r.fadeBalance[0]);
    f("fadeBalance", r.fadeBalance[1]);
    f("fadeBalance", VekAsUnsigned{r.fadeBalance[2]});
}
template <class F>
void fields(F& f, VekParamGainSetFadeBalanceRequest& r) {
    f("fadeBalance", r.fadeBalance);
}

}  // namespace vekprotocol
