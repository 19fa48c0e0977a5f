#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "AudioSim.h"
#include "SimFailures.h"
#include "SimParamStore.h"

// Everything the simulator remembers. Guarded by SimCore's mutex.
struct SimState {
    struct Effect {
        bool present = true;
        bool enabled = false;
    };
    struct Script {
        int32_t status;
        std::vector<uint8_t> image;
    };

    SimState();

    // The equaliser's stored parameters, as setEffectParam would leave them.
    void setEqBandCount(uint32_t mask, int32_t count);
    void setEqBand(uint32_t mask, uint32_t band, const AudioSim::EqBand& values);

    bool bypass = false;
    float masterGain = 0;
    std::map<uint32_t, float> channelGains;
    std::array<int32_t, 3> fadeBalance{{0, 0, 15}};
    uint32_t speakerEnable = 0x3F;
    std::map<uint32_t, float> speakerDelays;
    int32_t reverbMode = 0;
    std::map<std::string, Effect> effects;
    SimParamStore params;

    SimFailures failures;
    std::array<bool, 3> nullFactory{};  // by AudioSim::Object
    std::deque<Script> scripts;
    // The call logs are kept only after a reset, that is under a test: the daemon never
    // resets, and a log of every call would grow for as long as it serves.
    bool keepCalls = false;
    std::vector<std::string> calls;
    std::vector<AudioSim::ParamCall> paramCalls;
};
