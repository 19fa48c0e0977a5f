#pragma once

#include <string>
#include <vector>

#include "VekFilterList.h"
#include "VekResponseCurve.h"

namespace vekmaster {

// Fits filters to one channel of the device as the profile describes it: its type codes,
// its ranges, its band capacity, whole hertz and single-precision floats. Without fit
// every misfit is a problem and nothing may be sent; with it values are clamped and
// filters dropped, the least audible first, and every change is listed. The preamp goes
// onto the channel's gain (or the master gain), so that a boost never clips unnoticed.
class VekFilterFit {
public:
    using Band = VekResponseCurve::Band;

    enum class Preamp { Channel, Master, Ignore };
    struct Options {
        bool fit = false;
        Preamp preamp = Preamp::Channel;
    };
    // The channel as it is now.
    struct Channel {
        std::string feature;  // "EqV2" or "Eq"
        std::string name;     // "LF"
        std::vector<Band> bands;
        double gain = 0;  // the channel's gain, or the master gain with Preamp::Master
    };
    // A value the fit changed, or a filter it dropped (band -1).
    struct Change {
        int line = 0;
        int band = -1;
        double frequency = 0;  // where the panel marks it
        std::string text;      // "line 4: Q 20 clamped to 16"
    };
    struct Result {
        std::vector<std::string> problems;  // what does not fit; nothing may be sent
        std::vector<Change> changes;        // what the fit changed (rounding is noted always)
        std::vector<Band> bands;            // the channel's bands to set
        bool fixedCount = false;            // Eq: the band count cannot be set
        double gainFrom = 0;
        double gainTo = 0;
        std::vector<double> asked;  // the file's curve, preamp included, on the grid
        std::vector<double> set;    // the curve that will be set, gain change included
        double largestDb = 0;       // the largest |asked - set|, and where
        double largestHz = 0;
    };

    // The bands a channel of feature can hold at most.
    static int capacity(const VekDeviceProfile& profile, const std::string& feature);
    static Result fit(const VekFilterList& filters, const VekDeviceProfile& profile,
                      const Channel& channel, const Options& options, const VekResponseCurve& grid);
};

}  // namespace vekmaster
