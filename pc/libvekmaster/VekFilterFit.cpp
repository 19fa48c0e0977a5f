#include "VekFilterFit.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "VekFilterWriter.h"
#include "VekMessageCatalog.h"
#include "VekSettingsTable.h"

namespace vekmaster {

namespace {

using Shape = VekDeviceProfile::Shape;
using Filter = VekFilterList::Filter;
using Change = VekFilterFit::Change;

const char* const kShapeNames[] = {"off", "peaking", "low shelf", "high shelf", "low pass",
                                   "high pass"};

std::string shown(double value) {
    return VekFilterWriter::decimal(value, 0);
}

// A value as the device keeps it: whole for an integer field, single precision otherwise.
double stored(const VekMasterMessage* set, size_t index, double value) {
    const std::string field = "value" + std::to_string(index + 1);
    for (const VekFieldSignature::Slot& slot : set != nullptr ? set->signature.slots()
                                                               : std::vector<VekFieldSignature::Slot>{}) {
        if (slot.name == field && (slot.base == "int" || slot.base == "uint")) {
            return std::round(value);
        }
    }
    return static_cast<double>(static_cast<float>(value));
}

// One value of a filter against the profile's range: a problem, or clamped with fit.
struct Checker {
    const VekDeviceProfile& profile;
    const std::string& feature;
    bool fit;
    VekFilterFit::Result& result;

    void check(const Filter& filter, int band, const char* what, const std::string& field,
               const std::string& unit, double& value) const {
        const VekDeviceProfile::Limit* limit = profile.limit(feature, "SetBandConfig", field);
        if (limit == nullptr || (value >= limit->min && value <= limit->max)) {
            return;
        }
        const double clamped = std::min(std::max(value, limit->min), limit->max);
        const std::string where = "line " + std::to_string(filter.line) + ": ";
        const std::string range = shown(limit->min) + " to " + shown(limit->max) + unit;
        if (!fit) {
            result.problems.push_back(where + what + ' ' + shown(value) + unit + " is outside " +
                                      range + " (profile " + profile.name() + ')');
            return;
        }
        result.changes.push_back({filter.line, band, filter.frequency,
                                  where + what + ' ' + shown(value) + unit + " clamped to " +
                                      shown(clamped) + unit});
        value = clamped;
    }
};

double meanAbs(const std::vector<double>& curve) {
    double sum = 0;
    for (const double db : curve) {
        sum += std::fabs(db);
    }
    return curve.empty() ? 0 : sum / static_cast<double>(curve.size());
}

}  // namespace

int VekFilterFit::capacity(const VekDeviceProfile& profile, const std::string& feature) {
    int most = feature == "Eq" ? VekSettingsTable::kFixedBands : VekSettingsTable::kMaxBands;
    const VekDeviceProfile::Limit* count = profile.limit(feature, "SetBandCount", "bandCount");
    const VekDeviceProfile::Limit* band = profile.limit(feature, "SetBandConfig", "band");
    if (count != nullptr) {
        most = std::min(most, static_cast<int>(std::floor(count->max)));
    }
    if (band != nullptr) {
        most = std::min(most, static_cast<int>(std::floor(band->max)) + 1);
    }
    return std::max(most, 0);
}

VekFilterFit::Result VekFilterFit::fit(const VekFilterList& filters, const VekDeviceProfile& profile,
                                       const Channel& channel, const Options& options,
                                       const VekResponseCurve& grid) {
    Result result;
    result.fixedCount = channel.feature == "Eq";
    const VekDeviceProfile::BandLayout& layout = profile.band();
    const VekMasterMessage* set = VekMessageCatalog::shared().find(channel.feature, "SetBandConfig");
    const std::string prefix = channel.name + ": ";

    // The file's own curve, before anything is fitted.
    result.asked.assign(grid.frequencies().size(), filters.preamp);
    std::vector<double> audible;  // each filter's mean |dB|: how much of the range it moves
    for (const Filter& filter : filters.filters) {
        const std::vector<double> curve =
            filter.on ? grid.filter(filter.shape, filter.frequency, filter.gain, filter.q)
                      : std::vector<double>(grid.frequencies().size(), 0.0);
        for (size_t k = 0; k < curve.size(); ++k) {
            result.asked[k] += curve[k];
        }
        audible.push_back(meanAbs(curve));
    }

    // Types the profile has.
    std::vector<size_t> kept;
    std::vector<long> codes(filters.filters.size(), 0);
    for (size_t i = 0; i < filters.filters.size(); ++i) {
        const Filter& filter = filters.filters[i];
        const Shape shape = filter.on ? filter.shape : Shape::Off;
        if (profile.code(shape, codes[i])) {
            kept.push_back(i);
            continue;
        }
        const std::string text = "line " + std::to_string(filter.line) + ": the profile " +
                                 profile.name() + " has no " + kShapeNames[static_cast<int>(shape)] +
                                 " type (" + filter.type + "; its types: " + profile.typeNames() + ')';
        if (options.fit) {
            result.changes.push_back({filter.line, -1, filter.frequency, text + "; dropped"});
        } else {
            result.problems.push_back(text);
        }
    }

    // More filters than bands: the least audible go, an OFF filter first of all; of two
    // alike, the later line.
    const int most = capacity(profile, channel.feature);
    if (kept.size() > static_cast<size_t>(most)) {
        if (!options.fit) {
            result.problems.push_back(prefix + std::to_string(kept.size()) + " filters, but " +
                                      channel.feature + " takes at most " + std::to_string(most) +
                                      " bands a channel");
        } else {
            std::vector<size_t> ranked = kept;
            std::stable_sort(ranked.begin(), ranked.end(), [&](size_t a, size_t b) {
                return audible[a] < audible[b] || (audible[a] == audible[b] && a > b);
            });
            ranked.resize(kept.size() - static_cast<size_t>(most));
            for (const size_t i : ranked) {
                const Filter& filter = filters.filters[i];
                char mean[32];
                std::snprintf(mean, sizeof(mean), "%.2f", audible[i]);
                result.changes.push_back(
                    {filter.line, -1, filter.frequency,
                     "line " + std::to_string(filter.line) + ": dropped, " + channel.feature +
                         " takes " + std::to_string(most) + " bands (it moves " + mean +
                         " dB on average, among the least)"});
                kept.erase(std::find(kept.begin(), kept.end(), i));
            }
        }
    }

    // The bands: each keeps what the profile gives no meaning from the band it replaces
    // (a new band from the channel's first).
    const Checker checker{profile, channel.feature, options.fit, result};
    const auto field = [](int index) { return "value" + std::to_string(index + 1); };
    for (size_t b = 0; b < kept.size(); ++b) {
        const Filter& filter = filters.filters[kept[b]];
        const int band = static_cast<int>(b);
        Band values{};
        if (b < channel.bands.size()) {
            values = channel.bands[b];
        } else if (!channel.bands.empty()) {
            values = channel.bands.front();
        }
        double frequency = filter.frequency;
        double gain = filter.gain;
        double q = filter.q;
        checker.check(filter, band, "Fc", field(layout.frequency), " Hz", frequency);
        checker.check(filter, band, "Gain", field(layout.gain), " dB", gain);
        checker.check(filter, band, "Q", field(layout.q), "", q);
        values[static_cast<size_t>(layout.type)] = static_cast<double>(codes[kept[b]]);
        values[static_cast<size_t>(layout.frequency)] =
            stored(set, static_cast<size_t>(layout.frequency), frequency);
        values[static_cast<size_t>(layout.gain)] = stored(set, static_cast<size_t>(layout.gain), gain);
        values[static_cast<size_t>(layout.q)] = stored(set, static_cast<size_t>(layout.q), q);
        const double rounded = values[static_cast<size_t>(layout.frequency)];
        if (std::fabs(rounded - frequency) >= 0.005) {
            result.changes.push_back({filter.line, band, filter.frequency,
                                      "line " + std::to_string(filter.line) + ": Fc " +
                                          shown(frequency) + " Hz set as " + shown(rounded) +
                                          " Hz (the device takes whole hertz)"});
        }
        result.bands.push_back(values);
    }
    // A fixed band count: the bands after the file's are switched off.
    long off = 0;
    if (result.fixedCount && profile.code(Shape::Off, off)) {
        for (size_t b = result.bands.size(); b < channel.bands.size(); ++b) {
            Band values = channel.bands[b];
            values[static_cast<size_t>(layout.type)] = static_cast<double>(off);
            result.bands.push_back(values);
        }
    }

    // The preamp, on the gain it goes to.
    result.gainFrom = channel.gain;
    result.gainTo = channel.gain;
    if (options.preamp != Preamp::Ignore && filters.preampLine != 0) {
        const bool master = options.preamp == Preamp::Master;
        const VekDeviceProfile::Limit* limit =
            master ? profile.limit("Gain", "SetMaster", "masterGain")
                   : profile.limit("Gain", "SetChannel", "channelGain");
        double to = static_cast<double>(static_cast<float>(channel.gain + filters.preamp));
        const std::string what = master ? "the master gain" : channel.name + "'s gain";
        if (limit != nullptr && (to < limit->min || to > limit->max)) {
            const double clamped = std::min(std::max(to, limit->min), limit->max);
            const std::string text = "line " + std::to_string(filters.preampLine) + ": Preamp " +
                                     shown(filters.preamp) + " dB takes " + what + " from " +
                                     shown(channel.gain) + " to " + shown(to) + " dB, outside " +
                                     shown(limit->min) + " to " + shown(limit->max) + " dB";
            if (options.fit) {
                result.changes.push_back({filters.preampLine, -1, 0,
                                          text + "; clamped to " + shown(clamped) + " dB"});
            } else {
                result.problems.push_back(text);
            }
            to = clamped;
        }
        result.gainTo = to;
    }

    // What will be set, against what was asked.
    result.set.assign(grid.frequencies().size(), result.gainTo - result.gainFrom);
    for (const Band& band : result.bands) {
        const std::vector<double> curve = grid.band(band);
        for (size_t k = 0; k < curve.size(); ++k) {
            result.set[k] += curve[k];
        }
    }
    for (size_t k = 0; k < result.set.size(); ++k) {
        const double difference = std::fabs(result.asked[k] - result.set[k]);
        if (difference > result.largestDb) {
            result.largestDb = difference;
            result.largestHz = grid.frequencies()[k];
        }
    }
    return result;
}

}  // namespace vekmaster
