#include "VekPlatformHfe.h"

#include "VekEffectChannelConfig.h"
#include "VekFrontEffect.h"
#include "VekLe.h"

namespace vekserver {

using namespace vekprotocol;

namespace {

constexpr const char* kEffect = "hfe";

// HfeConfigRecord: the library's form of one channel's configuration.
struct HfeConfigRecord {
    static constexpr uint32_t kBufferSize = 148;
    static constexpr uint16_t kSize = 20;
    static constexpr uint32_t kChannelMask = 0;
    static constexpr uint32_t kFlag1 = 4;
    static constexpr uint32_t kFlag2 = 8;
    static constexpr uint32_t kFlag3 = 12;
    static constexpr uint32_t kValue = 16;

    static void write(uint8_t* record, const VekHfeChannelConfig& config) {
        VekLe::putU32(record + kFlag1, config.flag1 ? 1 : 0);
        VekLe::putU32(record + kFlag2, config.flag2 ? 1 : 0);
        VekLe::putU32(record + kFlag3, config.flag3 ? 1 : 0);
        VekLe::putF32(record + kValue, config.value);
    }
    static void read(const uint8_t* record, VekHfeChannelConfig& config) {
        config.flag1 = VekLe::getU32(record + kFlag1) != 0;
        config.flag2 = VekLe::getU32(record + kFlag2) != 0;
        config.flag3 = VekLe::getU32(record + kFlag3) != 0;
        config.value = VekLe::getF32(record + kValue);
    }
};

using ChannelConfig = VekEffectChannelConfig<HfeConfigRecord>;

}  // namespace

void VekPlatformHfe::packGetEnableResponse(VekParamHfeGetEnableRequest&,
                                           VekParamHfeGetEnableResponse& response) {
    VekFrontEffect::packGetEnable(hub_, kEffect, "get front HFE enable state", response);
}

void VekPlatformHfe::packSetEnableResponse(VekParamHfeSetEnableRequest& request,
                                           VekParamHfeSetEnableResponse& response) {
    VekFrontEffect::packSetEnable(hub_, kEffect, "set front HFE enable state", request.enable,
                                  response);
}

void VekPlatformHfe::packGetChannelConfigResponse(VekParamHfeGetChannelConfigRequest& request,
                                                  VekParamHfeGetChannelConfigResponse& response) {
    ChannelConfig::packGet(hub_, kEffect, "get front HFE channel config", request.channel,
                           response);
}

void VekPlatformHfe::packSetChannelConfigResponse(VekParamHfeSetChannelConfigRequest& request,
                                                  VekParamHfeSetChannelConfigResponse& response) {
    ChannelConfig::packSet(hub_, kEffect, "set front HFE channel config", request, response);
}

}  // namespace vekserver
