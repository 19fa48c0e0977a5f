#include "SimFailures.h"

#include <algorithm>
#include <iterator>

namespace {

const char* const kOperations[] = {
    // App
    "setSpeakerDelay", "getSpeakerDelay", "enableBypass", "disableBypass", "getBypass",
    "setReverbMode", "setEffectEnable", "getEffectEnable", "setEffectParam", "getEffectParam",
    // Volume
    "setMasterGain", "getMasterGain", "setChannelGain", "getChannelGain", "setFadeBalance",
    // Source
    "setStylePattern", "setSinePattern", "setSpeakerEnable", "getSpeakerEnable"};

}  // namespace

bool SimFailures::isOperation(const std::string& name) {
    return std::find(std::begin(kOperations), std::end(kOperations), name) != std::end(kOperations);
}

void SimFailures::always(const std::string& operation, int32_t status) {
    always_[operation] = status;
}

void SimFailures::onCall(const std::string& operation, int32_t status, unsigned nthCall) {
    onCall_[operation].push_back({nthCall, status});
}

void SimFailures::forMask(const std::string& operation, uint32_t mask, int32_t status) {
    forMask_[{operation, mask}] = status;
}

void SimFailures::clear() {
    always_.clear();
    onCall_.clear();
    forMask_.clear();
}

int32_t SimFailures::check(const std::string& operation, const uint32_t* mask) {
    int32_t status = 0;
    auto countdowns = onCall_.find(operation);
    if (countdowns != onCall_.end()) {
        auto& list = countdowns->second;
        for (auto& c : list) {
            // Every armed countdown counts this call, whether or not another fires.
            if (c.callsLeft > 0 && --c.callsLeft == 0 && status == 0) {
                status = c.status;
            }
        }
        list.erase(std::remove_if(list.begin(), list.end(),
                                  [](const Countdown& c) { return c.callsLeft == 0; }),
                   list.end());
        if (status != 0) {
            return status;
        }
    }
    if (mask != nullptr) {
        auto byMask = forMask_.find({operation, *mask});
        if (byMask != forMask_.end()) {
            return byMask->second;
        }
    }
    auto all = always_.find(operation);
    return all != always_.end() ? all->second : 0;
}
