#pragma once

#include <cstdint>
#include <string>

#include "VekRecordHead.h"

namespace vekprotocol {

// Records of the Speaker feature. Six-element arrays follow the speaker order
// LF, RF, LS, RS, CF, L1; channel names are passed on unvalidated.

struct VekParamSpeakerGetEnableRequest : VekRecordHead {
    static constexpr const char* kMessage = "GetEnableRequest";
};
struct VekParamSpeakerGetEnableResponse : VekRecordHead {
    static constexpr const char* kMessage = "GetEnableResponse";
    bool enable[6] = {};
};
struct VekParamSpeakerSetEnableRequest : VekRecordHead {
    static constexpr const char* kMessage = "SetEnableRequest";
    bool enable[6] = {};
};
struct VekParamSpeakerSetEnableResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetEnableResponse";
};
struct VekParamSpeakerGetDelayRequest : VekRecordHead {
    static constexpr const char* kMessage = "GetDelayRequest";
};
struct VekParamSpeakerGetDelayResponse : VekRecordHead {
    static constexpr const char* kMessage = "GetDelayResponse";
    float delay[6] = {};
};
struct VekParamSpeakerSetDelayRequest : VekRecordHead {
    static constexpr const char* kMessage = "SetDelayRequest";
    float delay[6] = {};
};
struct VekParamSpeakerSetDelayResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetDelayResponse";
};
struct VekParamSpeakerSetStylePatternRequest : VekRecordHead {
    static constexpr const char* kMessage = "SetStylePatternRequest";
    std::string channel;
    int32_t style = 0;
};
struct VekParamSpeakerSetStylePatternResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetStylePatternResponse";
};
struct VekParamSpeakerSetSinePatternRequest : VekRecordHead {
    static constexpr const char* kMessage = "SetSinePatternRequest";
    std::string channel;
    int32_t frequency = 0;
};
struct VekParamSpeakerSetSinePatternResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetSinePatternResponse";
};

template <class F>
void fields(F& f, VekParamSpeakerGetEnableResponse& r) {
    f("enable", r.enable);
}
template <class F>
void fields(F& f, VekParamSpeakerSetEnableRequest& r) {
    f("enable", r.enable);
}
template <class F>
void fields(F& f, VekParamSpeakerGetDelayResponse& r) {
    f("delay", r.delay);
}
template <class F>
void fields(F& f, VekParamSpeakerSetDelayRequest& r) {
    f("delay", r.delay);
}
template <class F>
void fields(F& f, VekParamSpeakerSetStylePatternRequest& r) {
    f("channel", r.channel);
    f("style", r.style);
}
template <class F>
void fields(F& f, VekParamSpeakerSetSinePatternRequest& r) {
    f("channel", r.channel);
    f("frequency", r.frequency);
}

}  // namespace vekprotocol
