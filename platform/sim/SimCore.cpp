#include "SimCore.h"

#include <cstdlib>

#include "SimFactory.h"
#include "SimSetup.h"

SimCore& SimCore::instance() {
    static SimCore core;
    return core;
}

bool SimCore::admit(AudioSim::Object object) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!configured_) {
        configured_ = true;
        SimFactory::apply(state_);
        const char* setup = std::getenv("AUDIO_SETTING_SIM");
        if (setup != nullptr) {
            SimSetup::apply(setup, state_);
        }
    }
    if (state_.nullFactory[static_cast<size_t>(object)]) {
        return false;
    }
    ++live_;
    return true;
}

void SimCore::released() {
    std::lock_guard<std::mutex> lock(mutex_);
    --live_;
}

int SimCore::live() {
    std::lock_guard<std::mutex> lock(mutex_);
    return live_;
}

std::vector<std::string> SimCore::reset(const std::string& setup, bool fromEnvironment) {
    std::lock_guard<std::mutex> lock(mutex_);
    state_ = SimState();
    state_.keepCalls = true;
    configured_ = !fromEnvironment;
    return fromEnvironment ? std::vector<std::string>{} : SimSetup::apply(setup, state_);
}
