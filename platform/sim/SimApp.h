#pragma once

#include "DVAudioSetting.h"

// The simulated App object: speaker delays, bypass, reverb mode and the effects of
// "frontApp". State lives in SimCore; the object itself holds none.
class SimApp : public audio::DVAudioSetting::App {
public:
    int32_t setSpeakerDelay(uint32_t channelMask, float delay) override;
    int32_t getSpeakerDelay(uint32_t channelMask, float* delay) override;
    int32_t enableBypass() override;
    int32_t disableBypass() override;
    int32_t getBypass(int* enable) override;
    int32_t setReverbMode(int32_t mode) override;
    int32_t setEffectEnable(const char* app, const char* effect, bool enable) override;
    int32_t getEffectEnable(const char* app, const char* effect, bool* enable) override;
    int32_t setEffectParam(const char* app, const char* effect, uint8_t* param) override;
    int32_t getEffectParam(const char* app, const char* effect, uint8_t* param) override;
};
