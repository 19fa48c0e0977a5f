#pragma once

#include "DVAudioSetting.h"

// The simulated Volume object: master gain, channel gains by mask, fade/balance.
class SimVolume : public audio::DVAudioSetting::Volume {
public:
    int32_t setMasterGain(float gain) override;
    int32_t getMasterGain(float* gain) override;
    int32_t setChannelGain(uint32_t channelMask, float gain) override;
    int32_t getChannelGain(uint32_t channelMask, float* gain) override;
    int32_t setFadeBalance(int32_t first, int32_t second, int32_t third) override;
};
