#include "VekResponseCurve.h"

#include <algorithm>
#include <cmath>
#include <complex>

namespace vekmaster {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kLowHz = 20;
constexpr double kHighHz = 20000;

using Shape = VekDeviceProfile::Shape;

}  // namespace

VekResponseCurve::VekResponseCurve(const VekDeviceProfile& profile, size_t points)
    : profile_(profile) {
    points = std::min(std::max(points, kMinPoints), kMaxPoints);
    const double ratio = std::log(kHighHz / kLowHz);
    for (size_t i = 0; i < points; ++i) {
        frequencies_.push_back(kLowHz *
                               std::exp(ratio * static_cast<double>(i) / static_cast<double>(points - 1)));
    }
}

VekResponseCurve::Section VekResponseCurve::section(const Band& values) const {
    const VekDeviceProfile::BandLayout& layout = profile_.band();
    return section(profile_.shape(values[static_cast<size_t>(layout.type)]),
                   values[static_cast<size_t>(layout.frequency)],
                   values[static_cast<size_t>(layout.gain)], values[static_cast<size_t>(layout.q)]);
}

VekResponseCurve::Section VekResponseCurve::section(Shape shape, double f0, double gain,
                                                    double q) const {
    const double nyquist = profile_.sampleRate() / 2;
    Section s;
    if (shape == Shape::Off || !std::isfinite(gain) || !(f0 > 0 && f0 < nyquist) ||
        !(q > 0 && std::isfinite(q))) {
        return s;
    }
    const double w0 = 2 * kPi * f0 / profile_.sampleRate();
    const double cosw = std::cos(w0);
    const double alpha = std::sin(w0) / (2 * q);
    const double a = std::pow(10.0, gain / 40);
    const double root = 2 * std::sqrt(a) * alpha;
    switch (shape) {
        case Shape::Peaking:
            s = {1 + alpha * a, -2 * cosw, 1 - alpha * a, 1 + alpha / a, -2 * cosw, 1 - alpha / a};
            break;
        case Shape::LowShelf:
            s = {a * ((a + 1) - (a - 1) * cosw + root), 2 * a * ((a - 1) - (a + 1) * cosw),
                 a * ((a + 1) - (a - 1) * cosw - root), (a + 1) + (a - 1) * cosw + root,
                 -2 * ((a - 1) + (a + 1) * cosw),       (a + 1) + (a - 1) * cosw - root};
            break;
        case Shape::HighShelf:
            s = {a * ((a + 1) + (a - 1) * cosw + root), -2 * a * ((a - 1) + (a + 1) * cosw),
                 a * ((a + 1) + (a - 1) * cosw - root), (a + 1) - (a - 1) * cosw + root,
                 2 * ((a - 1) - (a + 1) * cosw),        (a + 1) - (a - 1) * cosw - root};
            break;
        case Shape::LowPass:
            s = {(1 - cosw) / 2, 1 - cosw, (1 - cosw) / 2, 1 + alpha, -2 * cosw, 1 - alpha};
            break;
        case Shape::HighPass:
            s = {(1 + cosw) / 2, -(1 + cosw), (1 + cosw) / 2, 1 + alpha, -2 * cosw, 1 - alpha};
            break;
        case Shape::Off:
            break;
    }
    return s;
}

double VekResponseCurve::magnitude(const Section& s, double frequency) const {
    const double w = 2 * kPi * frequency / profile_.sampleRate();
    const std::complex<double> z1 = std::polar(1.0, -w);
    const std::complex<double> z2 = z1 * z1;
    const double num = std::abs(s.b0 + s.b1 * z1 + s.b2 * z2);
    const double den = std::abs(s.a0 + s.a1 * z1 + s.a2 * z2);
    if (!(num > 0) || !(den > 0)) {
        return kFloorDb;
    }
    const double db = 20 * std::log10(num / den);
    return std::isfinite(db) ? std::max(db, kFloorDb) : kFloorDb;
}

double VekResponseCurve::at(const Band& values, double frequency) const {
    return magnitude(section(values), frequency);
}

std::vector<double> VekResponseCurve::band(const Band& values) const {
    return curveOf(section(values));
}

std::vector<double> VekResponseCurve::filter(Shape shape, double f0, double gain, double q) const {
    return curveOf(section(shape, f0, gain, q));
}

std::vector<double> VekResponseCurve::curveOf(const Section& s) const {
    std::vector<double> curve;
    curve.reserve(frequencies_.size());
    for (const double f : frequencies_) {
        curve.push_back(magnitude(s, f));
    }
    return curve;
}

VekResponseCurve::Json VekResponseCurve::json(const std::vector<Band>& bands) const {
    const auto rounded = [](const std::vector<double>& values, int decimals) {
        Json list = Json::array();
        for (const double value : values) {
            list.push_back(VekValueJson::number(value, decimals));
        }
        return list;
    };
    std::vector<double> total(frequencies_.size(), 0.0);
    Json list = Json::array();
    for (size_t i = 0; i < bands.size(); ++i) {
        const std::vector<double> curve = band(bands[i]);
        for (size_t k = 0; k < curve.size(); ++k) {
            total[k] += curve[k];
        }
        list.push_back({{"band", i},
                        {"values", rounded(std::vector<double>(bands[i].begin(), bands[i].end()), 6)},
                        {"curve", rounded(curve, 3)}});
    }
    for (double& value : total) {
        value = std::max(value, kFloorDb);
    }
    return Json{{"sampleRate", VekValueJson::number(profile_.sampleRate(), 3)},
                {"frequencies", rounded(frequencies_, 2)},
                {"total", rounded(total, 3)},
                {"bands", std::move(list)}};
}

}  // namespace vekmaster
