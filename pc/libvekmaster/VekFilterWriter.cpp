#include "VekFilterWriter.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "VekFilterParser.h"

namespace vekmaster {

namespace {

using Shape = VekDeviceProfile::Shape;
using Form = VekFilterList::Form;

bool sameFloat(double a, double b) {
    return static_cast<float>(a) == static_cast<float>(b);
}

// The type name a band is written with, and whether it carries Gain and Q.
const char* typeOf(Shape shape, double q, bool& gain, bool& hasQ) {
    gain = shape == Shape::Peaking || shape == Shape::LowShelf || shape == Shape::HighShelf;
    hasQ = true;
    const bool butterworth = sameFloat(q, VekFilterParser::kButterworthQ);
    switch (shape) {
        case Shape::LowShelf:
            return "LSC";
        case Shape::HighShelf:
            return "HSC";
        case Shape::LowPass:
            hasQ = !butterworth;
            return butterworth ? "LP" : "LPQ";
        case Shape::HighPass:
            hasQ = !butterworth;
            return butterworth ? "HP" : "HPQ";
        case Shape::Peaking:
        case Shape::Off:
            break;
    }
    return "PK";
}

}  // namespace

std::string VekFilterWriter::decimal(double value, int decimals) {
    char text[64];
    for (int places = decimals; places < 12; ++places) {
        std::snprintf(text, sizeof(text), "%.*f", places, value);
        if (sameFloat(std::strtod(text, nullptr), value)) {
            break;
        }
    }
    return text;
}

std::string VekFilterWriter::write(const std::vector<VekResponseCurve::Band>& bands,
                                   const VekDeviceProfile& profile, Form form,
                                   const std::string& notes) {
    const bool rew = form == Form::Rew;
    std::string text;
    if (rew) {
        char date[64] = "";
        const std::time_t now = std::time(nullptr);
        std::tm utc{};
        if (gmtime_r(&now, &utc) != nullptr) {
            std::strftime(date, sizeof(date), "%Y-%m-%d %H:%M:%S UTC", &utc);
        }
        text = "Filter Settings file\n\nDated: " + std::string(date) + "\n\nNotes: " + notes +
               "\n\nEqualiser: Generic\n";
    } else {
        text = "# " + notes + '\n';
    }
    const VekDeviceProfile::BandLayout& layout = profile.band();
    for (size_t i = 0; i < bands.size(); ++i) {
        const VekResponseCurve::Band& band = bands[i];
        const Shape shape = profile.shape(band[static_cast<size_t>(layout.type)]);
        const double frequency = band[static_cast<size_t>(layout.frequency)];
        const double gain = band[static_cast<size_t>(layout.gain)];
        const double q = band[static_cast<size_t>(layout.q)];
        bool hasGain = false;
        bool hasQ = false;
        const char* type = typeOf(shape, q, hasGain, hasQ);
        // An off band keeps its values as an OFF peaking filter, so that it reads back.
        hasGain = hasGain || shape == Shape::Off;
        char line[160];
        const std::string number = std::to_string(i + 1) + ':';
        const std::string state = shape == Shape::Off ? "OFF" : "ON";
        std::snprintf(line, sizeof(line), rew ? "Filter %-3s %-3s %-8s Fc %s Hz" : "Filter %s %s %s Fc %s Hz",
                      number.c_str(), state.c_str(), type, decimal(frequency, rew ? 1 : 0).c_str());
        text += line;
        if (hasGain) {
            text += (rew ? "  Gain " : " Gain ") + decimal(gain, rew ? 1 : 0) + " dB";
        }
        if (hasQ) {
            text += (rew ? "  Q " : " Q ") + decimal(q, rew ? 2 : 0);
        }
        text += '\n';
    }
    return text;
}

}  // namespace vekmaster
