#pragma once

#include <cstdint>
#include <string>

#include "VekRecordHead.h"

namespace vekprotocol {

// Field lists of the equaliser messages, shared by the EqV2 records below and the Eq
// records of the same messages (VekEqParams.h), so that each is written once. Every
// body starts with the record head and a record derives from exactly one body: the
// body's fields() is then the nearest base and wins over the head's empty one.

struct VekEqEnable : VekRecordHead {
    bool enable = false;
};
// Band counts in the channel order LF, RF, LS, RS, CF, L1.
struct VekEqBandCount : VekRecordHead {
    int32_t bandCount[6] = {};
};
// One band of one channel; the channel text is passed on unvalidated.
struct VekEqBand : VekRecordHead {
    std::string channel;
    uint32_t band = 0;
};
// The band's six values travel uninterpreted between the master and the platform.
struct VekEqBandConfig : VekEqBand {
    int32_t value1 = 0;
    int32_t value2 = 0;
    float value3 = 0;
    float value4 = 0;
    int32_t value5 = 0;
    int32_t value6 = 0;
};

template <class F>
void fields(F& f, VekEqEnable& r) {
    f("enable", r.enable);
}
template <class F>
void fields(F& f, VekEqBandCount& r) {
    f("bandCount", r.bandCount);
}
template <class F>
void fields(F& f, VekEqBand& r) {
    f("channel", r.channel);
    f("band", r.band);
}
template <class F>
void fields(F& f, VekEqBandConfig& r) {
    fields(f, static_cast<VekEqBand&>(r));
    f("value1", r.value1);
    f("value2", r.value2);
    f("value3", r.value3);
    f("value4", r.value4);
    f("value5", r.value5);
    f("value6", r.value6);
}

// Records of the EqV2 feature.

struct VekParamEqV2GetEnableRequest : VekRecordHead {
    static constexpr const char* kMessage = "GetEnableRequest";
};
struct VekParamEqV2GetEnableResponse : VekEqEnable {
    static constexpr const char* kMessage = "GetEnableResponse";
};
struct VekParamEqV2SetEnableRequest : VekEqEnable {
    static constexpr const char* kMessage = "SetEnableRequest";
};
struct VekParamEqV2SetEnableResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetEnableResponse";
};
struct VekParamEqV2GetBandCountRequest : VekRecordHead {
    static constexpr const char* kMessage = "GetBandCountRequest";
};
struct VekParamEqV2GetBandCountResponse : VekEqBandCount {
    static constexpr const char* kMessage = "GetBandCountResponse";
};
struct VekParamEqV2SetBandCountRequest : VekEqBandCount {
    static constexpr const char* kMessage = "SetBandCountRequest";
};
struct VekParamEqV2SetBandCountResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetBandCountResponse";
};
struct VekParamEqV2GetBandConfigRequest : VekEqBand {
    static constexpr const char* kMessage = "GetBandConfigRequest";
};
struct VekParamEqV2GetBandConfigResponse : VekEqBandConfig {
    static constexpr const char* kMessage = "GetBandConfigResponse";
};
struct VekParamEqV2SetBandConfigRequest : VekEqBandConfig {
    static constexpr const char* kMessage = "SetBandConfigRequest";
};
struct VekParamEqV2SetBandConfigResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetBandConfigResponse";
};

}  // namespace vekprotocol
