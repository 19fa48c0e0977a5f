#pragma once

#include <string>
#include <vector>

#include "SimState.h"

// The set-up string (AUDIO_SETTING_SIM): "absent=", "on=", "null=" and "fail=" items
// separated by ';' (see AudioSim.h).
class SimSetup {
public:
    // Applies the well-formed items in order; each malformed item is reported in one
    // line on standard error and ignored whole. Gives the reports.
    static std::vector<std::string> apply(const std::string& text, SimState& state);
};
