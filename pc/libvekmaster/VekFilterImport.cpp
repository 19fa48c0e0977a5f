#include "VekFilterImport.h"

#include <cstdio>
#include <cstdlib>

#include "VekChannelBands.h"
#include "VekFilterParser.h"
#include "VekFilterWriter.h"
#include "VekNames.h"
#include "VekSettingItem.h"
#include "VekTuningDocument.h"

namespace vekmaster {

namespace {

using Json = VekFilterImport::Json;
using Preamp = VekFilterFit::Preamp;

const std::pair<const char*, Preamp> kPreamps[] = {
    {"channel", Preamp::Channel}, {"master", Preamp::Master}, {"ignore", Preamp::Ignore}};

size_t indexOf(const std::string& channel) {
    const std::vector<std::string>& names = VekSettingsTable::channels();
    return static_cast<size_t>(std::find(names.begin(), names.end(), channel) - names.begin());
}

// A computed value as a document holds it: the shortest decimal a float reads back from.
Json valueJson(const std::string& base, double value) {
    if (base == "int" || base == "uint") {
        return static_cast<long long>(value);
    }
    return std::strtod(VekFilterWriter::decimal(value, 0).c_str(), nullptr);
}

Json bandItem(const VekSetting& setting, const VekResponseCurve::Band& band) {
    Json item = Json::object();
    for (size_t i = 0; i < setting.value.size() && i < band.size(); ++i) {
        item[setting.value[i].name] = valueJson(setting.value[i].base, band[i]);
    }
    return item;
}

double numberIn(const Json* value, bool& found) {
    found = value != nullptr && value->is_number();
    return found ? value->get<double>() : 0;
}

// Where the preamp goes in a document's settings.
const char* gainName(Preamp preamp) {
    return preamp == Preamp::Master ? "master" : "channel";
}

}  // namespace

std::string VekFilterImport::channels(const std::string& list, std::vector<std::string>& out) {
    out.clear();
    size_t at = 0;
    while (at <= list.size()) {
        const size_t comma = std::min(list.find(',', at), list.size());
        const std::string name = list.substr(at, comma - at);
        const std::string problem = VekChannelBands::checkChannel(name);
        if (!problem.empty()) {
            return problem;
        }
        if (VekNames::contains(out, name)) {
            return "channel " + name + " is named twice";
        }
        out.push_back(name);
        at = comma + 1;
    }
    return "";
}

std::string VekFilterImport::preamp(const std::string& name, Preamp& out) {
    for (const auto& entry : kPreamps) {
        if (name == entry.first) {
            out = entry.second;
            return "";
        }
    }
    return "--preamp=" + name + " is not channel, master or ignore";
}

bool VekFilterImport::parse(const Request& request, VekFilterList& filters, Outcome& outcome) {
    for (const std::string& problem : VekFilterParser::parse(request.text, filters)) {
        outcome.problems.push_back(request.source + ": " + problem);
    }
    if (outcome.problems.empty() && filters.filters.empty()) {
        outcome.problems.push_back(request.source + ": holds no filter");
    }
    outcome.status = outcome.problems.empty() ? VekExitStatus::kOk : VekExitStatus::kData;
    return outcome.problems.empty();
}

bool VekFilterImport::fitAll(const Request& request, const VekFilterList& filters,
                             Outcome& outcome) {
    const std::shared_ptr<const VekDeviceProfile> profile = VekDeviceProfile::inUse();
    const VekResponseCurve grid(*profile, request.points);
    const VekSettingsTable& table = VekSettingsTable::shared();
    Json settings = Json::object();
    for (Fitted& fitted : outcome.channels) {
        fitted.result = VekFilterFit::fit(filters, *profile, fitted.channel, request.options, grid);
        for (const std::string& problem : fitted.result.problems) {
            outcome.problems.push_back(request.source + ": " + problem);
        }
        const VekFilterFit::Channel& channel = fitted.channel;
        const VekSetting* bands = table.find(channel.feature, "band");
        Json list = Json::array();
        for (const VekResponseCurve::Band& band : fitted.result.bands) {
            list.push_back(bandItem(*bands, band));
        }
        settings[channel.feature]["band"][channel.name] = std::move(list);
        if (!fitted.result.fixedCount) {
            settings[channel.feature]["bandCount"][channel.name] = fitted.result.bands.size();
        }
        if (fitted.result.gainTo != fitted.result.gainFrom) {
            const Json gain = valueJson("float", fitted.result.gainTo);
            if (request.options.preamp == Preamp::Master) {
                settings["Gain"]["master"] = gain;
            } else {
                settings["Gain"]["channel"][channel.name] = gain;
            }
        }
    }
    outcome.document = {{"format", VekTuningDocument::kFormat}, {"settings", std::move(settings)}};
    if (!outcome.problems.empty()) {
        outcome.status = VekExitStatus::kData;
        return false;
    }
    std::string problem = VekTuningDocument::check(table, outcome.document);
    if (problem.empty()) {
        problem = VekTuningDocument::outOfRange(table, outcome.document, *profile).text;
    }
    if (!problem.empty()) {
        outcome.problems.push_back(request.source + ": " + problem);
        outcome.status = VekExitStatus::kData;
        return false;
    }
    return true;
}

VekFilterImport::Outcome VekFilterImport::toDevice(VekDeviceAccess& access, const Request& request) {
    Outcome outcome;
    VekFilterList filters;
    if (!parse(request, filters, outcome)) {
        return outcome;
    }
    const bool needGain = filters.preampLine != 0 && request.options.preamp != Preamp::Ignore;
    const VekSetting* gain =
        VekSettingsTable::shared().find("Gain", gainName(request.options.preamp));
    for (const std::string& name : request.channels) {
        VekChannelBands bands;
        const VekMasterReply* failed = nullptr;
        std::string problem;
        if (!bands.read(access, name, failed, problem)) {
            outcome.status = failed == nullptr ? VekExitStatus::kNg : VekExitStatus::of(*failed);
            outcome.stopped =
                failed == nullptr ? problem
                : failed->answered()
                    ? failed->feature + ' ' + failed->message + " answered NG: the bands of " +
                          name + " cannot be read"
                    : failed->problem;
            return outcome;
        }
        Fitted fitted;
        fitted.channel = {bands.feature, name, bands.bands, 0};
        fitted.before = bands.bands;
        if (needGain) {
            const VekMasterReply& reply = access.request("Gain", gain->get->name, {}, nullptr);
            const Json item = VekSettingItem::fromReply(
                *gain, reply, request.options.preamp == Preamp::Master ? -1 : static_cast<int>(indexOf(name)));
            bool found = false;
            fitted.channel.gain = numberIn(&item, found);
            if (reply.outcome != VekMasterReply::Outcome::Ok || !found) {
                outcome.status = VekExitStatus::of(reply);
                outcome.stopped = "Gain " + gain->get->name + ": " +
                                  (reply.answered() ? "answered NG" : reply.problem) +
                                  ", so the preamp cannot be added (--preamp=ignore leaves it)";
                outcome.status = outcome.status == VekExitStatus::kOk ? VekExitStatus::kNg : outcome.status;
                return outcome;
            }
        }
        outcome.channels.push_back(std::move(fitted));
    }
    if (!fitAll(request, filters, outcome)) {
        return outcome;
    }
    VekTuningApply::Options options;
    options.dryRun = request.dryRun;
    outcome.applied = access.apply(outcome.document, options);
    outcome.status = outcome.applied.status;
    outcome.stopped = outcome.applied.problem;
    return outcome;
}

VekFilterImport::Outcome VekFilterImport::toDocument(Json& document, const Request& request) {
    Outcome outcome;
    VekFilterList filters;
    if (!parse(request, filters, outcome)) {
        return outcome;
    }
    const bool needGain = filters.preampLine != 0 && request.options.preamp != Preamp::Ignore;
    const Json* settings = VekValueJson::member(&document, "settings");
    const Json* gains = VekValueJson::member(VekValueJson::member(settings, "Gain"),
                                             gainName(request.options.preamp));
    for (const std::string& name : request.channels) {
        VekChannelBands bands;
        const std::string problem = bands.take(document, name);
        if (!problem.empty()) {
            outcome.problems.push_back(problem);
            continue;
        }
        Fitted fitted;
        fitted.channel = {bands.feature, name, bands.bands, 0};
        fitted.before = bands.bands;
        bool found = !needGain;
        if (needGain) {
            fitted.channel.gain = numberIn(request.options.preamp == Preamp::Master
                                               ? gains
                                               : VekValueJson::member(gains, name),
                                           found);
        }
        if (!found) {
            outcome.problems.push_back(std::string("the document holds no Gain.") +
                                       gainName(request.options.preamp) +
                                       (request.options.preamp == Preamp::Master ? "" : "." + name) +
                                       " for the preamp (--preamp=ignore leaves it)");
            continue;
        }
        outcome.channels.push_back(std::move(fitted));
    }
    if (!outcome.problems.empty()) {
        outcome.status = VekExitStatus::kData;
        return outcome;
    }
    if (!fitAll(request, filters, outcome) || request.dryRun) {
        return outcome;
    }
    for (const auto& feature : outcome.document["settings"].items()) {
        for (const auto& setting : feature.value().items()) {
            Json& into = document["settings"][feature.key()][setting.key()];
            if (!setting.value().is_object()) {
                into = setting.value();
                continue;
            }
            for (const auto& channel : setting.value().items()) {
                into[channel.key()] = channel.value();
            }
        }
    }
    return outcome;
}

Json VekFilterImport::json(const Outcome& outcome, size_t points) {
    const std::shared_ptr<const VekDeviceProfile> profile = VekDeviceProfile::inUse();
    const VekResponseCurve grid(*profile, points);
    const auto rounded = [](const std::vector<double>& values, int decimals) {
        Json list = Json::array();
        for (const double value : values) {
            list.push_back(VekValueJson::number(value, decimals));
        }
        return list;
    };
    Json channels = Json::array();
    for (const Fitted& fitted : outcome.channels) {
        const VekFilterFit::Result& r = fitted.result;
        Json changes = Json::array();
        for (const VekFilterFit::Change& change : r.changes) {
            changes.push_back({{"line", change.line},
                               {"band", change.band},
                               {"frequency", VekValueJson::number(change.frequency, 2)},
                               {"text", change.text}});
        }
        std::vector<double> before(grid.frequencies().size(), 0.0);
        for (const VekResponseCurve::Band& band : fitted.before) {
            const std::vector<double> curve = grid.band(band);
            for (size_t k = 0; k < curve.size(); ++k) {
                before[k] += curve[k];
            }
        }
        channels.push_back({{"channel", fitted.channel.name},
                            {"feature", fitted.channel.feature},
                            {"bands", r.bands.size()},
                            {"gain", {{"from", VekValueJson::number(r.gainFrom, 3)},
                                      {"to", VekValueJson::number(r.gainTo, 3)}}},
                            {"changes", std::move(changes)},
                            {"largest", {{"db", VekValueJson::number(r.largestDb, 3)},
                                         {"hz", VekValueJson::number(r.largestHz, 0)}}},
                            {"curves", {{"frequencies", rounded(grid.frequencies(), 2)},
                                        {"before", rounded(before, 3)},
                                        {"asked", rounded(r.asked, 3)},
                                        {"after", rounded(r.set, 3)}}}});
    }
    Json body = {{"status", outcome.status == VekExitStatus::kOk ? "OK" : "NG"},
                 {"exit", outcome.status},
                 {"problems", outcome.problems},
                 {"channels", std::move(channels)},
                 {"document", outcome.document}};
    if (!outcome.stopped.empty()) {
        body["error"] = outcome.stopped;
    }
    if (outcome.problems.empty() && outcome.stopped.empty()) {
        body["apply"] = VekTuningApply::json(outcome.applied);
    }
    return body;
}

std::string VekFilterImport::text(const Outcome& outcome) {
    std::string out;
    for (const Fitted& fitted : outcome.channels) {
        const VekFilterFit::Result& r = fitted.result;
        const std::string name = fitted.channel.name + ": ";
        out += name + std::to_string(r.bands.size()) + ' ' + fitted.channel.feature +
               (r.bands.size() == 1 ? " band (" : " bands (") + std::to_string(fitted.before.size()) +
               " before)\n";
        if (r.gainTo != r.gainFrom) {
            out += name + "gain " + VekFilterWriter::decimal(r.gainFrom, 0) + " -> " +
                   VekFilterWriter::decimal(r.gainTo, 0) + " dB (the preamp)\n";
        }
        for (const VekFilterFit::Change& change : r.changes) {
            out += name + change.text + '\n';
        }
        char largest[96] = "under 0.01 dB";
        if (r.largestDb >= 0.005) {
            std::snprintf(largest, sizeof(largest), "%.2f dB at %.0f Hz", r.largestDb, r.largestHz);
        }
        out += name + "largest difference from the file: " + largest + '\n';
    }
    return out;
}

}  // namespace vekmaster
