#include "SimApp.h"

#include <unistd.h>

#include <cstring>
#include <string>
#include <utility>

#include "SimBytes.h"
#include "SimCore.h"
#include "SimParamStore.h"
#include "SimStatus.h"
#include "SimText.h"

namespace {

// The effect a call addresses; null when the application is not "frontApp" or the
// effect is unknown or absent.
SimState::Effect* findEffect(SimState& s, const char* app, const char* effect) {
    if (app == nullptr || effect == nullptr || std::strcmp(app, "frontApp") != 0) {
        return nullptr;
    }
    auto found = s.effects.find(effect);
    return found != s.effects.end() && found->second.present ? &found->second : nullptr;
}

std::string effectLine(const char* operation, const char* app, const char* effect) {
    return SimText::format("%s app=%s effect=%s", operation, SimText::orNull(app),
                           SimText::orNull(effect));
}

// Logs the call with the buffer as it is on entry: the bytes are kept even when the
// call then fails.
std::string paramLine(const char* operation, const char* app, const char* effect,
                      const uint8_t* param) {
    AudioSim::ParamCall seen{operation, SimText::orNull(app), SimText::orNull(effect), {}};
    std::string line = effectLine(operation, app, effect);
    if (param == nullptr) {
        line += " param=(null)";
    } else {
        seen.bytes.assign(param, param + SimParamStore::extent(SimText::orNull(effect), param));
        line += SimText::format(" totalLength=%u", SimBytes::u32(param));
    }
    SimCore::instance().locked([&](SimState& s) {
        if (s.keepCalls) {
            s.paramCalls.push_back(std::move(seen));
        }
    });
    return line;
}

int32_t writeScript(const SimState::Script& script, const char* effect, uint8_t* param) {
    if (script.image.empty()) {
        return script.status;
    }
    const uint32_t room = SimParamStore::capacity(effect, param);
    if (room != 0 && script.image.size() > room) {
        const std::string line = SimText::format(
            "audiosim: scripted getEffectParam answer of %zu bytes does not fit the %u-byte "
            "%s buffer; not written\n",
            script.image.size(), room, effect);
        (void)!write(STDERR_FILENO, line.data(), line.size());
        return SimStatus::kInvalid;
    }
    std::memcpy(param, script.image.data(), script.image.size());
    return script.status;
}

}  // namespace

int32_t SimApp::setSpeakerDelay(uint32_t channelMask, float delay) {
    return SimCore::instance().call(
        "setSpeakerDelay", SimText::format("setSpeakerDelay mask=%u delay=%g", channelMask, delay),
        &channelMask, [&](SimState& s) {
            s.speakerDelays[channelMask] = delay;
            return SimStatus::kOk;
        });
}

int32_t SimApp::getSpeakerDelay(uint32_t channelMask, float* delay) {
    return SimCore::instance().call(
        "getSpeakerDelay", SimText::format("getSpeakerDelay mask=%u", channelMask), &channelMask,
        [&](SimState& s) {
            if (delay == nullptr) {
                return SimStatus::kInvalid;
            }
            auto found = s.speakerDelays.find(channelMask);
            *delay = found != s.speakerDelays.end() ? found->second : 0.0f;
            return SimStatus::kOk;
        });
}

int32_t SimApp::enableBypass() {
    return SimCore::instance().call("enableBypass", "enableBypass", nullptr, [](SimState& s) {
        s.bypass = true;
        return SimStatus::kOk;
    });
}

int32_t SimApp::disableBypass() {
    return SimCore::instance().call("disableBypass", "disableBypass", nullptr, [](SimState& s) {
        s.bypass = false;
        return SimStatus::kOk;
    });
}

int32_t SimApp::getBypass(int* enable) {
    return SimCore::instance().call("getBypass", "getBypass", nullptr, [&](SimState& s) {
        if (enable == nullptr) {
            return SimStatus::kInvalid;
        }
        *enable = s.bypass ? 1 : 0;
        return SimStatus::kOk;
    });
}

int32_t SimApp::setReverbMode(int32_t mode) {
    return SimCore::instance().call("setReverbMode", SimText::format("setReverbMode mode=%d", mode),
                                    nullptr, [&](SimState& s) {
                                        s.reverbMode = mode;
                                        return SimStatus::kOk;
                                    });
}

int32_t SimApp::setEffectEnable(const char* app, const char* effect, bool enable) {
    std::string line =
        effectLine("setEffectEnable", app, effect) + SimText::format(" enable=%d", enable ? 1 : 0);
    return SimCore::instance().call("setEffectEnable", std::move(line), nullptr, [&](SimState& s) {
        SimState::Effect* found = findEffect(s, app, effect);
        if (found == nullptr) {
            return SimStatus::kNoSuchEffect;
        }
        found->enabled = enable;
        return SimStatus::kOk;
    });
}

int32_t SimApp::getEffectEnable(const char* app, const char* effect, bool* enable) {
    return SimCore::instance().call("getEffectEnable", effectLine("getEffectEnable", app, effect),
                                    nullptr, [&](SimState& s) {
                                        SimState::Effect* found = findEffect(s, app, effect);
                                        if (found == nullptr) {
                                            return SimStatus::kNoSuchEffect;
                                        }
                                        if (enable == nullptr) {
                                            return SimStatus::kInvalid;
                                        }
                                        *enable = found->enabled;
                                        return SimStatus::kOk;
                                    });
}

int32_t SimApp::setEffectParam(const char* app, const char* effect, uint8_t* param) {
    std::string line = paramLine("setEffectParam", app, effect, param);
    return SimCore::instance().call("setEffectParam", std::move(line), nullptr, [&](SimState& s) {
        if (findEffect(s, app, effect) == nullptr) {
            return SimStatus::kNoSuchEffect;
        }
        return param == nullptr ? SimStatus::kInvalid : s.params.store(effect, param);
    });
}

int32_t SimApp::getEffectParam(const char* app, const char* effect, uint8_t* param) {
    std::string line = paramLine("getEffectParam", app, effect, param);
    return SimCore::instance().call("getEffectParam", std::move(line), nullptr, [&](SimState& s) {
        if (findEffect(s, app, effect) == nullptr) {
            return SimStatus::kNoSuchEffect;
        }
        if (param == nullptr) {
            return SimStatus::kInvalid;
        }
        if (!s.scripts.empty()) {
            const SimState::Script script = std::move(s.scripts.front());
            s.scripts.pop_front();
            return writeScript(script, effect, param);
        }
        return s.params.answer(effect, param);
    });
}
