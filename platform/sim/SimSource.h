#pragma once

#include "DVAudioSetting.h"

// The simulated Source object: the speaker enable mask and the test patterns (which
// leave nothing to read back but their call log lines).
class SimSource : public audio::DVAudioSetting::Source {
public:
    int32_t setStylePattern(uint32_t channelMask, int32_t style) override;
    int32_t setSinePattern(uint32_t channelMask, int32_t value) override;
    int32_t setSpeakerEnable(uint32_t speakerMask) override;
    int32_t getSpeakerEnable(uint32_t* speakerMask) override;
};
