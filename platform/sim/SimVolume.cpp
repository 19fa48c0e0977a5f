#include "SimVolume.h"

#include "SimCore.h"
#include "SimStatus.h"
#include "SimText.h"

int32_t SimVolume::setMasterGain(float gain) {
    return SimCore::instance().call("setMasterGain", SimText::format("setMasterGain gain=%g", gain),
                                    nullptr, [&](SimState& s) {
                                        s.masterGain = gain;
                                        return SimStatus::kOk;
                                    });
}

int32_t SimVolume::getMasterGain(float* gain) {
    return SimCore::instance().call("getMasterGain", "getMasterGain", nullptr, [&](SimState& s) {
        if (gain == nullptr) {
            return SimStatus::kInvalid;
        }
        *gain = s.masterGain;
        return SimStatus::kOk;
    });
}

int32_t SimVolume::setChannelGain(uint32_t channelMask, float gain) {
    return SimCore::instance().call(
        "setChannelGain", SimText::format("setChannelGain mask=%u gain=%g", channelMask, gain),
        &channelMask, [&](SimState& s) {
            s.channelGains[channelMask] = gain;
            return SimStatus::kOk;
        });
}

int32_t SimVolume::getChannelGain(uint32_t channelMask, float* gain) {
    return SimCore::instance().call(
        "getChannelGain", SimText::format("getChannelGain mask=%u", channelMask), &channelMask,
        [&](SimState& s) {
            if (gain == nullptr) {
                return SimStatus::kInvalid;
            }
            auto found = s.channelGains.find(channelMask);
            *gain = found != s.channelGains.end() ? found->second : 0.0f;
            return SimStatus::kOk;
        });
}

int32_t SimVolume::setFadeBalance(int32_t first, int32_t second, int32_t third) {
    return SimCore::instance().call(
        "setFadeBalance",
        SimText::format("setFadeBalance first=%d second=%d third=%d", first, second, third),
        nullptr, [&](SimState& s) {
            s.fadeBalance = {{first, second, third}};
            return SimStatus::kOk;
        });
}
