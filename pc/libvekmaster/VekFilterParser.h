#pragma once

#include <string>
#include <vector>

#include "VekFilterList.h"

namespace vekmaster {

// Reads the two text forms of parametric filters: the APO configuration form
// ("Preamp: -6.2 dB", "Filter 1: ON PK Fc 105 Hz Gain -3.9 dB Q 1.41") and the Filter
// Settings form (its header, then "Filter  1: ON  PK  Fc 63.0 Hz  Gain -5.0 dB  Q 4.00"
// or "Filter  2: None"). A line it does not understand is a problem with its number,
// never skipped.
class VekFilterParser {
public:
    // A Butterworth pass filter's Q, and a shelf's when neither a Q nor a slope is given.
    static constexpr double kButterworthQ = 0.70710678118654752;

    // The problems, one "line N: ..." each; none when the whole text was read.
    static std::vector<std::string> parse(const std::string& text, VekFilterList& out);
    // A shelf's Q for a slope in dB per octave (the cookbook's S = slope / 12).
    static double shelfQ(double slopeDb, double gain);
};

}  // namespace vekmaster
