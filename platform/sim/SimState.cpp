#include "SimState.h"

#include <utility>

#include "SimBytes.h"

namespace {

const char* const kEqualizer = "equalizer";
constexpr uint16_t kLayoutId = 0;
constexpr uint16_t kBandId = 1;

}  // namespace

SimState::SimState() : effects{{"equalizer", {}}, {"hfe", {}}, {"vb", {}}} {}

void SimState::setEqBandCount(uint32_t mask, int32_t count) {
    std::vector<uint8_t> entry = params.unit(kEqualizer, kLayoutId, mask);
    entry.resize(SimParamStore::kLayoutEntrySize);
    SimBytes::putU32(entry.data(), mask);
    SimBytes::putU32(entry.data() + 4, static_cast<uint32_t>(count));
    params.setUnit(kEqualizer, kLayoutId, mask, SimParamStore::kNoBand, std::move(entry));
}

void SimState::setEqBand(uint32_t mask, uint32_t band, const AudioSim::EqBand& values) {
    std::vector<uint8_t> entry(SimParamStore::kBandEntrySize, 0);
    uint8_t* e = entry.data();
    SimBytes::putU32(e, band);
    SimBytes::putU32(e + 4, static_cast<uint32_t>(values.value1));
    SimBytes::putU16(e + 8, values.value2);
    SimBytes::putF32(e + 12, values.value3);
    SimBytes::putF32(e + 16, values.value4);
    SimBytes::putU32(e + 20, static_cast<uint32_t>(values.value5));
    SimBytes::putU32(e + 24, static_cast<uint32_t>(values.value6));
    params.setUnit(kEqualizer, kBandId, mask, band, std::move(entry));
}
