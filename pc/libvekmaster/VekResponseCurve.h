#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "VekDeviceProfile.h"
#include "VekValueJson.h"

namespace vekmaster {

// The magnitude response of a channel's equaliser as the profile reads its bands: one
// second-order section per band (peaking, low and high shelf, low and high pass, from
// the audio-filter cookbook) at the profile's sample rate, on a log grid from 20 Hz to
// 20 kHz. The bands are in series, so their dB add up.
class VekResponseCurve {
public:
    using Json = VekValueJson::Json;
    using Band = std::array<double, 6>;  // a band's six values, value1 first

    static constexpr size_t kDefaultPoints = 256;
    static constexpr size_t kMinPoints = 16;
    static constexpr size_t kMaxPoints = 2048;
    // Far below anything audible; keeps a pass filter's zero at Nyquist a finite number.
    static constexpr double kFloorDb = -120;

    VekResponseCurve(const VekDeviceProfile& profile, size_t points);

    // points frequencies from 20 Hz to 20 kHz, evenly spaced on a log axis.
    const std::vector<double>& frequencies() const { return frequencies_; }
    // One band's response in dB at each frequency; 0 dB for a band the profile reads as
    // off or whose frequency or Q cannot make a filter.
    std::vector<double> band(const Band& values) const;
    // The band's response at one frequency, in dB.
    double at(const Band& values, double frequency) const;
    // A filter's response in dB at each frequency, by shape rather than by a profile's
    // type code (a filter the profile may lack).
    std::vector<double> filter(VekDeviceProfile::Shape shape, double f0, double gain,
                               double q) const;

    // {"sampleRate", "frequencies", "total", "bands": [{"band", "values", "curve"}]}
    Json json(const std::vector<Band>& bands) const;

private:
    struct Section {
        double b0 = 1, b1 = 0, b2 = 0, a0 = 1, a1 = 0, a2 = 0;
    };
    Section section(const Band& values) const;
    Section section(VekDeviceProfile::Shape shape, double f0, double gain, double q) const;
    std::vector<double> curveOf(const Section& s) const;
    double magnitude(const Section& s, double frequency) const;

    const VekDeviceProfile& profile_;
    std::vector<double> frequencies_;
};

}  // namespace vekmaster
