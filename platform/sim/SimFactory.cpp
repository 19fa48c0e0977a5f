#include "SimFactory.h"

#include <cstddef>

namespace {

constexpr size_t kChannels = 6;
constexpr uint32_t kBands = 20;

constexpr float kChannelGain[kChannels] = {0, -0.5f, -2, -2.5f, -1, -4};
constexpr float kSpeakerDelay[kChannels] = {0, 0, 1.5f, 1.5f, 0.5f, 0};
constexpr int32_t kBandCount[kChannels] = {10, 10, 10, 10, 10, 5};
constexpr uint16_t kCentre[kBands] = {31, 63, 125, 250, 500, 1000, 2000, 4000, 8000,  16000,
                                      44, 88, 177, 354, 707, 1414, 2828, 5657, 11314, 20000};

}  // namespace

void SimFactory::apply(SimState& state) {
    state.masterGain = -12;
    for (size_t i = 0; i < kChannels; ++i) {
        const uint32_t mask = 1u << i;
        state.channelGains[mask] = kChannelGain[i];
        state.speakerDelays[mask] = kSpeakerDelay[i];
        state.setEqBandCount(mask, kBandCount[i]);
        for (uint32_t band = 0; band < kBands; ++band) {
            AudioSim::EqBand values;
            values.value1 = 2;
            values.value2 = kCentre[band];
            values.value4 = 0.707f;
            values.value6 = 1;
            state.setEqBand(mask, band, values);
        }
    }
}
