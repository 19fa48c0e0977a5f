#pragma once

#include <string>

#include "VekValueJson.h"

namespace vekmaster {

// A response curve (as VekResponseCurve::json gives it) for people and spreadsheets: an
// SVG picture with a log frequency axis and a dB axis, or CSV.
class VekCurvePlot {
public:
    using Json = VekValueJson::Json;

    // "frequency,total,band0,band1,..." then one row per point.
    static std::string csv(const Json& curve);
    // Each band's curve faint behind their sum; title above the plot.
    static std::string svg(const Json& curve, const std::string& title);
};

}  // namespace vekmaster
