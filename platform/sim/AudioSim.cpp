#include "AudioSim.h"

#include <cstdio>
#include <cstdlib>

#include <algorithm>
#include <utility>

#include "SimBytes.h"
#include "SimCore.h"

namespace {

constexpr uint16_t kLayoutId = 0;
constexpr uint16_t kBandId = 1;
const char* const kEqualizer = "equalizer";

template <class Work>
auto locked(Work&& work) {
    return SimCore::instance().locked(std::forward<Work>(work));
}

template <class Map>
float valueOr0(const Map& map, uint32_t mask) {
    auto found = map.find(mask);
    return found != map.end() ? found->second : 0.0f;
}

// A test that names no real operation is wrong; stop it loudly rather than let it
// pass. Nothing linked into the daemon throws.
void misuse(const std::string& what) {
    std::fprintf(stderr, "AudioSim: %s\n", what.c_str());
    std::abort();
}

void requireOperation(const std::string& operation) {
    if (!SimFailures::isOperation(operation)) {
        misuse("no library operation '" + operation + "'");
    }
}

}  // namespace

bool AudioSim::EqBand::operator==(const EqBand& o) const {
    return value1 == o.value1 && value2 == o.value2 && value3 == o.value3 && value4 == o.value4 &&
           value5 == o.value5 && value6 == o.value6;
}

std::vector<std::string> AudioSim::reset(const std::string& setup) {
    return SimCore::instance().reset(setup, false);
}

void AudioSim::resetFromEnvironment() {
    SimCore::instance().reset("", true);
}

bool AudioSim::bypass() {
    return locked([](SimState& s) { return s.bypass; });
}
void AudioSim::setBypass(bool on) {
    locked([&](SimState& s) { s.bypass = on; });
}
float AudioSim::masterGain() {
    return locked([](SimState& s) { return s.masterGain; });
}
void AudioSim::setMasterGain(float gain) {
    locked([&](SimState& s) { s.masterGain = gain; });
}
float AudioSim::channelGain(uint32_t mask) {
    return locked([&](SimState& s) { return valueOr0(s.channelGains, mask); });
}
void AudioSim::setChannelGain(uint32_t mask, float gain) {
    locked([&](SimState& s) { s.channelGains[mask] = gain; });
}
std::array<int32_t, 3> AudioSim::fadeBalance() {
    return locked([](SimState& s) { return s.fadeBalance; });
}
void AudioSim::setFadeBalance(int32_t first, int32_t second, int32_t third) {
    locked([&](SimState& s) { s.fadeBalance = {{first, second, third}}; });
}
uint32_t AudioSim::speakerEnable() {
    return locked([](SimState& s) { return s.speakerEnable; });
}
void AudioSim::setSpeakerEnable(uint32_t mask) {
    locked([&](SimState& s) { s.speakerEnable = mask; });
}
float AudioSim::speakerDelay(uint32_t mask) {
    return locked([&](SimState& s) { return valueOr0(s.speakerDelays, mask); });
}
void AudioSim::setSpeakerDelay(uint32_t mask, float delay) {
    locked([&](SimState& s) { s.speakerDelays[mask] = delay; });
}
int32_t AudioSim::reverbMode() {
    return locked([](SimState& s) { return s.reverbMode; });
}
void AudioSim::setReverbMode(int32_t mode) {
    locked([&](SimState& s) { s.reverbMode = mode; });
}

bool AudioSim::effectPresent(const std::string& effect) {
    return locked([&](SimState& s) {
        auto found = s.effects.find(effect);
        return found != s.effects.end() && found->second.present;
    });
}
void AudioSim::setEffectPresent(const std::string& effect, bool present) {
    locked([&](SimState& s) { s.effects[effect].present = present; });
}
bool AudioSim::effectEnabled(const std::string& effect) {
    return locked([&](SimState& s) {
        auto found = s.effects.find(effect);
        return found != s.effects.end() && found->second.enabled;
    });
}
void AudioSim::setEffectEnabled(const std::string& effect, bool on) {
    locked([&](SimState& s) {
        auto found = s.effects.find(effect);
        if (found != s.effects.end()) {
            found->second.enabled = on;
        } else {
            // An effect that did not exist stays absent: only its switch is recorded.
            s.effects[effect] = SimState::Effect{false, on};
        }
    });
}

int32_t AudioSim::eqBandCount(uint32_t mask) {
    const std::vector<uint8_t> entry =
        locked([&](SimState& s) { return s.params.unit(kEqualizer, kLayoutId, mask); });
    return entry.size() >= 8 ? static_cast<int32_t>(SimBytes::u32(entry.data() + 4)) : 0;
}

void AudioSim::setEqBandCount(uint32_t mask, int32_t count) {
    locked([&](SimState& s) { s.setEqBandCount(mask, count); });
}

AudioSim::EqBand AudioSim::eqBand(uint32_t mask, uint32_t band) {
    std::vector<uint8_t> entry =
        locked([&](SimState& s) { return s.params.unit(kEqualizer, kBandId, mask, band); });
    entry.resize(SimParamStore::kBandEntrySize);
    const uint8_t* e = entry.data();
    EqBand values;
    values.value1 = static_cast<int32_t>(SimBytes::u32(e + 4));
    values.value2 = SimBytes::u16(e + 8);
    values.value3 = SimBytes::f32(e + 12);
    values.value4 = SimBytes::f32(e + 16);
    values.value5 = static_cast<int32_t>(SimBytes::u32(e + 20));
    values.value6 = static_cast<int32_t>(SimBytes::u32(e + 24));
    return values;
}

void AudioSim::setEqBand(uint32_t mask, uint32_t band, const EqBand& values) {
    locked([&](SimState& s) { s.setEqBand(mask, band, values); });
}

std::vector<uint8_t> AudioSim::effectRecord(const std::string& effect, uint32_t mask,
                                            uint16_t paramId) {
    return locked([&](SimState& s) { return s.params.unit(effect, paramId, mask); });
}

void AudioSim::setEffectRecord(const std::string& effect, uint32_t mask, std::vector<uint8_t> body,
                               uint16_t paramId) {
    if (body.size() < 4) {
        body.resize(4);
    }
    SimBytes::putU32(body.data(), mask);
    locked([&](SimState& s) {
        s.params.setUnit(effect, paramId, mask, SimParamStore::kNoBand, std::move(body));
    });
}

void AudioSim::failAlways(const std::string& operation, int32_t status) {
    requireOperation(operation);
    locked([&](SimState& s) { s.failures.always(operation, status); });
}

void AudioSim::failOn(const std::string& operation, int32_t status, unsigned nthCall) {
    requireOperation(operation);
    if (nthCall == 0) {
        misuse("failOn: calls are counted from 1");
    }
    locked([&](SimState& s) { s.failures.onCall(operation, status, nthCall); });
}

void AudioSim::failForMask(const std::string& operation, uint32_t mask, int32_t status) {
    requireOperation(operation);
    locked([&](SimState& s) { s.failures.forMask(operation, mask, status); });
}

void AudioSim::setNullFactory(Object object, bool returnsNull) {
    locked([&](SimState& s) { s.nullFactory[static_cast<size_t>(object)] = returnsNull; });
}

std::vector<std::string> AudioSim::calls() {
    return locked([](SimState& s) { return s.calls; });
}

std::vector<AudioSim::ParamCall> AudioSim::paramCalls() {
    return locked([](SimState& s) { return s.paramCalls; });
}

void AudioSim::clearCalls() {
    locked([](SimState& s) {
        s.calls.clear();
        s.paramCalls.clear();
    });
}

int AudioSim::liveObjects() {
    return SimCore::instance().live();
}

void AudioSim::scriptGetEffectParam(int32_t status, std::vector<uint8_t> image) {
    locked([&](SimState& s) { s.scripts.push_back({status, std::move(image)}); });
}

std::vector<uint8_t> AudioSim::paramBuffer(const std::vector<ParamRecord>& records) {
    std::vector<uint8_t> image(4, 0);
    for (const ParamRecord& r : records) {
        const size_t at = image.size();
        image.resize(at + 4 + r.body.size());
        SimBytes::putU16(image.data() + at, r.paramId);
        SimBytes::putU16(image.data() + at + 2, static_cast<uint16_t>(r.body.size()));
        std::copy(r.body.begin(), r.body.end(), image.begin() + static_cast<long>(at) + 4);
    }
    SimBytes::putU32(image.data(), static_cast<uint32_t>(image.size() - 4));
    return image;
}
