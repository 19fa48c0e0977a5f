#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "AudioSim.h"
#include "SimState.h"

// The one simulator: its state, the mutex that guards it, and the frame of every
// library call (log line, injected failure, then the work).
class SimCore {
public:
    static SimCore& instance();

    template <class Work>
    auto locked(Work&& work) {
        std::lock_guard<std::mutex> lock(mutex_);
        return work(state_);
    }

    // Logs line; an injected failure is returned without doing work(state).
    template <class Work>
    int32_t call(const char* operation, std::string line, const uint32_t* mask, Work&& work) {
        std::lock_guard<std::mutex> lock(mutex_);
        if (state_.keepCalls) {
            state_.calls.push_back(std::move(line));
        }
        const int32_t injected = state_.failures.check(operation, mask);
        return injected != 0 ? injected : work(state_);
    }

    // A factory asks whether to make an object (false: it returns null) and counts it
    // as live if so. The first call reads AUDIO_SETTING_SIM unless reset came first.
    bool admit(AudioSim::Object object);
    void released();
    int live();

    // Defaults, then setup; with fromEnvironment, the set-up string is instead read
    // from AUDIO_SETTING_SIM at the next admit.
    std::vector<std::string> reset(const std::string& setup, bool fromEnvironment);

private:
    SimCore() = default;

    std::mutex mutex_;
    SimState state_;
    bool configured_ = false;
    int live_ = 0;
};
