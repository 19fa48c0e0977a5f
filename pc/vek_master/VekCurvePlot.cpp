#include "VekCurvePlot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace vekmaster {

namespace {

using Json = VekCurvePlot::Json;

constexpr double kWidth = 800;
constexpr double kHeight = 420;
constexpr double kLeft = 56;
constexpr double kRight = 16;
constexpr double kTop = 36;
constexpr double kBottom = 40;
constexpr double kLowHz = 20;
constexpr double kHighHz = 20000;
constexpr double kStepDb = 6;

std::string fixed(double value, int decimals) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.*f", decimals, value);
    return text;
}

std::string escaped(const std::string& text) {
    std::string out;
    for (const char c : text) {
        out += c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '&' ? "&amp;" : std::string(1, c);
    }
    return out;
}

double valueAt(const Json& list, size_t i) {
    return i < list.size() && list[i].is_number() ? list[i].get<double>() : 0;
}

// The plot's dB range: at least -24 to +12, widened in 6 dB steps to hold the curves.
void range(const Json& curve, double& low, double& high) {
    low = -24;
    high = 12;
    const auto widen = [&](const Json& values) {
        for (const Json& v : values) {
            if (v.is_number()) {
                low = std::min(low, std::floor(v.get<double>() / kStepDb) * kStepDb);
                high = std::max(high, std::ceil(v.get<double>() / kStepDb) * kStepDb);
            }
        }
    };
    widen(curve["total"]);
    for (const Json& band : curve["bands"]) {
        widen(band["curve"]);
    }
    low = std::max(low, -60.0);  // a pass filter's floor would squash the rest
    high = std::min(high, 60.0);
}

}  // namespace

std::string VekCurvePlot::csv(const Json& curve) {
    std::string text = "frequency,total";
    const Json& bands = curve["bands"];
    for (size_t b = 0; b < bands.size(); ++b) {
        text += ",band" + std::to_string(b);
    }
    text += '\n';
    const Json& frequencies = curve["frequencies"];
    for (size_t i = 0; i < frequencies.size(); ++i) {
        text += fixed(valueAt(frequencies, i), 2) + ',' + fixed(valueAt(curve["total"], i), 3);
        for (const Json& band : bands) {
            text += ',' + fixed(valueAt(band["curve"], i), 3);
        }
        text += '\n';
    }
    return text;
}

std::string VekCurvePlot::svg(const Json& curve, const std::string& title) {
    double low = 0;
    double high = 0;
    range(curve, low, high);
    const double plotW = kWidth - kLeft - kRight;
    const double plotH = kHeight - kTop - kBottom;
    const auto x = [&](double hz) {
        return kLeft + plotW * std::log(hz / kLowHz) / std::log(kHighHz / kLowHz);
    };
    const auto y = [&](double db) {
        return kTop + plotH * (high - std::min(std::max(db, low), high)) / (high - low);
    };
    const auto path = [&](const Json& values) {
        std::string d;
        const Json& frequencies = curve["frequencies"];
        for (size_t i = 0; i < frequencies.size(); ++i) {
            d += (i == 0 ? "M" : " L") + fixed(x(valueAt(frequencies, i)), 1) + ',' +
                 fixed(y(valueAt(values, i)), 1);
        }
        return d;
    };
    std::string s = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + fixed(kWidth, 0) +
                    "\" height=\"" + fixed(kHeight, 0) + "\" viewBox=\"0 0 " + fixed(kWidth, 0) +
                    ' ' + fixed(kHeight, 0) +
                    "\" font-family=\"sans-serif\" font-size=\"12\">\n"
                    "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n"
                    "<text x=\"" + fixed(kLeft, 0) + "\" y=\"22\" font-size=\"15\">" +
                    escaped(title) + "</text>\n";
    // Log grid: 1, 2 and 5 of each decade, labelled.
    const double marks[] = {20, 50, 100, 200, 500, 1000, 2000, 5000, 10000, 20000};
    for (const double hz : marks) {
        const std::string label = hz >= 1000 ? fixed(hz / 1000, 0) + "k" : fixed(hz, 0);
        s += "<line x1=\"" + fixed(x(hz), 1) + "\" y1=\"" + fixed(kTop, 0) + "\" x2=\"" +
             fixed(x(hz), 1) + "\" y2=\"" + fixed(kTop + plotH, 0) +
             "\" stroke=\"#ddd\"/>\n<text x=\"" + fixed(x(hz), 1) + "\" y=\"" +
             fixed(kTop + plotH + 16, 0) + "\" text-anchor=\"middle\">" + label + "</text>\n";
    }
    for (double db = low; db <= high + 1e-9; db += kStepDb) {
        s += "<line x1=\"" + fixed(kLeft, 0) + "\" y1=\"" + fixed(y(db), 1) + "\" x2=\"" +
             fixed(kLeft + plotW, 0) + "\" y2=\"" + fixed(y(db), 1) + "\" stroke=\"" +
             (db == 0 ? "#999" : "#ddd") + "\"/>\n<text x=\"" + fixed(kLeft - 6, 0) + "\" y=\"" +
             fixed(y(db) + 4, 1) + "\" text-anchor=\"end\">" + fixed(db, 0) + "</text>\n";
    }
    s += "<text x=\"" + fixed(kLeft + plotW / 2, 0) + "\" y=\"" + fixed(kHeight - 6, 0) +
         "\" text-anchor=\"middle\">Hz</text>\n<text x=\"14\" y=\"" + fixed(kTop + plotH / 2, 0) +
         "\" text-anchor=\"middle\" transform=\"rotate(-90 14 " + fixed(kTop + plotH / 2, 0) +
         ")\">dB</text>\n";
    for (const Json& band : curve["bands"]) {
        s += "<path d=\"" + path(band["curve"]) +
             "\" fill=\"none\" stroke=\"#7a9cc6\" stroke-opacity=\"0.45\"/>\n";
    }
    s += "<path d=\"" + path(curve["total"]) +
         "\" fill=\"none\" stroke=\"#1f4e99\" stroke-width=\"2.5\"/>\n"
         "<rect x=\"" + fixed(kLeft, 0) + "\" y=\"" + fixed(kTop, 0) + "\" width=\"" +
         fixed(plotW, 0) + "\" height=\"" + fixed(plotH, 0) +
         "\" fill=\"none\" stroke=\"#666\"/>\n</svg>\n";
    return s;
}

}  // namespace vekmaster
