#pragma once

#include <string>
#include <vector>

#include "VekDeviceProfile.h"

namespace vekmaster {

// Parametric filters as a measurement tool hands them over, before any device is
// involved: cookbook biquads by shape, with the line each came from so that a fit can
// name it.
struct VekFilterList {
    enum class Form { Apo, Rew };

    struct Filter {
        int line = 0;
        bool on = true;
        std::string type;  // as the file names it: "PK", "LSC", "HPQ"
        VekDeviceProfile::Shape shape = VekDeviceProfile::Shape::Peaking;
        double frequency = 0;  // Hz
        double gain = 0;       // dB; 0 for a pass filter
        double q = 0;          // a shelf's slope already converted
    };

    Form form = Form::Apo;
    double preamp = 0;  // dB
    int preampLine = 0;  // 0: the file has no preamp
    std::vector<Filter> filters;
};

}  // namespace vekmaster
