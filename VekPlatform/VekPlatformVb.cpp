#include "VekPlatformVb.h"

#include "VekEffectChannelConfig.h"
#include "VekFrontEffect.h"
#include "VekLe.h"

namespace vekserver {

using namespace vekprotocol;

namespace {

constexpr const char* kEffect = "vb";

// VbConfigRecord: the library's form of one channel's configuration. Its floats are
// not in the order of the wire's params.
struct VbConfigRecord {
    static constexpr uint32_t kBufferSize = 508;
    static constexpr uint16_t kSize = 80;
    static constexpr uint32_t kChannelMask = 0;
    static constexpr uint32_t kFlag = 4;    // one byte, then a zero byte
    static constexpr uint32_t kNumber = 6;  // the low 16 bits of number
    // Offset of params element i. Reads and writes share it, so values come back in
    // the order they were set.
    static constexpr uint32_t kParamCount = 18;
    static constexpr uint32_t kParam[kParamCount] = {12, 8,  20, 16, 24, 32, 40, 48, 56,
                                                     28, 36, 44, 52, 60, 64, 68, 72, 76};

    static void write(uint8_t* record, const VekVbChannelConfig& config) {
        record[kFlag] = config.flag ? 1 : 0;
        VekLe::putU16(record + kNumber, static_cast<uint16_t>(config.number));
        for (uint32_t i = 0; i < kParamCount; ++i) {
            VekLe::putF32(record + kParam[i], config.params[i]);
        }
    }
    static void read(const uint8_t* record, VekVbChannelConfig& config) {
        config.flag = record[kFlag] != 0;
        config.number = VekLe::getU16(record + kNumber);
        for (uint32_t i = 0; i < kParamCount; ++i) {
            config.params[i] = VekLe::getF32(record + kParam[i]);
        }
    }
};

using ChannelConfig = VekEffectChannelConfig<VbConfigRecord>;

}  // namespace

void VekPlatformVb::packGetEnableResponse(VekParamVbGetEnableRequest&,
                                          VekParamVbGetEnableResponse& response) {
    VekFrontEffect::packGetEnable(hub_, kEffect, "get front VB enable state", response);
}

void VekPlatformVb::packSetEnableResponse(VekParamVbSetEnableRequest& request,
                                          VekParamVbSetEnableResponse& response) {
    VekFrontEffect::packSetEnable(hub_, kEffect, "set front VB enable state", request.enable,
                                  response);
}

void VekPlatformVb::packGetChannelConfigResponse(VekParamVbGetChannelConfigRequest& request,
                                                 VekParamVbGetChannelConfigResponse& response) {
    ChannelConfig::packGet(hub_, kEffect, "get front VB channel config", request.channel, response);
}

void VekPlatformVb::packSetChannelConfigResponse(VekParamVbSetChannelConfigRequest& request,
                                                 VekParamVbSetChannelConfigResponse& response) {
    ChannelConfig::packSet(hub_, kEffect, "set front VB channel config", request, response);
}

}  // namespace vekserver
