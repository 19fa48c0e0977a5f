#include "VekCommandRunner.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "VekChannelBands.h"
#include "VekCurvePlot.h"
#include "VekFilterImport.h"
#include "VekFilterWriter.h"
#include "VekRawFileSink.h"
#include "VekReplyFormatter.h"
#include "VekReplyJson.h"
#include "VekScriptReader.h"
#include "VekTuningApply.h"
#include "VekTuningDiff.h"
#include "VekTuningDocument.h"

namespace vekmaster {

namespace {

using Json = VekCommandRunner::Json;
using Verb = VekMasterCommand::Verb;

std::string plural(size_t n, const char* one, const char* many) {
    return std::to_string(n) + ' ' + (n == 1 ? one : many);
}

std::string writeFile(const std::string& path, const std::string& text) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    bool written = file != nullptr && std::fwrite(text.data(), 1, text.size(), file) == text.size();
    written = (file != nullptr && std::fclose(file) == 0) && written;
    return written ? "" : "cannot write " + path + ": " + std::strerror(errno);
}

}  // namespace

std::string VekCommandRunner::fileIn(const std::string& directory, const std::string& device) {
    std::string name = device;
    for (char& c : name) {
        c = c == '/' ? '_' : c;
    }
    const size_t first = name.find_first_not_of('_');
    return directory + '/' + (first == std::string::npos ? name : name.substr(first)) + ".json";
}

bool VekCommandRunner::load(const VekSettingsTable& table, const std::string& path, Json& document,
                            VekCommandResult& result) {
    std::string text;
    std::string problem = VekScriptReader::load(path, text);
    if (!problem.empty()) {
        result.fail(VekExitStatus::kIo, problem);
        return false;
    }
    problem = VekTuningDocument::parse(text, document);
    if (problem.empty()) {
        problem = VekTuningDocument::check(table, document);
    }
    if (!problem.empty()) {
        result.fail(VekExitStatus::kUsage, path + ": " + problem);
        return false;
    }
    return true;
}

VekCommandResult VekCommandRunner::run(const VekMasterCommand& command) {
    switch (command.verb) {
        case Verb::Snapshot:
            return snapshot(command);
        case Verb::Apply:
            return apply(command);
        case Verb::Diff:
            return diff(command);
        case Verb::Curve:
            return curve(command);
        case Verb::EqImport:
            return eqImport(command);
        case Verb::EqExport:
            return eqExport(command);
        case Verb::Message:
            break;
    }
    return message(command);
}

VekCommandResult VekCommandRunner::message(const VekMasterCommand& command) {
    VekCommandResult result;
    VekRawFileSink file(command.output);
    const VekMasterReply& reply =
        access_.send(command.request, command.output.empty() ? nullptr : &file);
    if (!reply.received) {
        return result.fail(VekExitStatus::of(reply), reply.problem);
    }
    const std::string text = VekReplyFormatter::text(reply);
    result.json = VekReplyJson::of(reply);
    result.out = json_ ? VekValueJson::dump(result.json) + '\n' : text;
    result.status = VekExitStatus::of(reply);
    // The answer on one line: "masterGain=-10 OK".
    for (const char c : text) {
        result.summary += c == '\n' ? ' ' : c;
    }
    result.summary.pop_back();
    if (!reply.answered()) {
        result.complain(reply.problem);
        result.summary += " (" + reply.problem + ')';
    }
    return result;
}

VekCommandResult VekCommandRunner::snapshot(const VekMasterCommand& command) {
    VekCommandResult result;
    VekDeviceReading reading;
    if (!access_.read(nullptr, reading)) {
        return result.fail(VekExitStatus::of(access_.failure()), access_.failure().problem);
    }
    int values = 0;
    int missing = 0;
    VekTuningDocument::count(table_, reading.settings, values, missing);
    const Json document = VekTuningDocument::make(table_, reading.path, reading.version,
                                                  reading.features, std::move(reading.settings));
    const std::string text = VekValueJson::pretty(document);
    const std::string target = outputDir_ ? fileIn(command.output, device_) : command.output;
    const std::string counted = plural(static_cast<size_t>(values), "value", "values") +
                                (missing > 0 ? ", " + std::to_string(missing) + " missing" : "");
    if (target.empty()) {
        result.out = text;
    } else {
        const std::string problem = writeFile(target, text);
        if (!problem.empty()) {
            return result.fail(VekExitStatus::kIo, problem);
        }
        result.out = target + ": " + counted + '\n';
    }
    if (missing > 0) {
        result.status = VekExitStatus::kNg;
        result.complain(plural(static_cast<size_t>(missing), "value", "values") +
                        " missing: the device answered NG");
    }
    result.summary = std::string(missing > 0 ? "NG " : "OK ") +
                     (target.empty() ? "" : target + ' ') + '(' + counted + ')';
    result.json["status"] = missing > 0 ? "NG" : "OK";
    result.json["output"] = target;
    result.json["values"] = values;
    result.json["missing"] = missing;
    if (json_ && !target.empty()) {
        result.out = VekValueJson::dump(result.json) + '\n';
    }
    return result;
}

VekCommandResult VekCommandRunner::apply(const VekMasterCommand& command) {
    VekCommandResult result;
    Json document;
    if (!load(table_, command.paths[0], document, result)) {
        return result;
    }
    const VekError breach =
        VekTuningDocument::outOfRange(table_, document, *VekDeviceProfile::inUse());
    if (breach) {
        return result.fail(VekExitStatus::kUsage,
                           command.paths[0] + ": " + breach.text + "; nothing was sent");
    }
    VekTuningApply::Options options;
    options.dryRun = command.dryRun;
    options.bypass = command.bypass;
    const VekTuningApply::Result applied = access_.apply(document, options);
    describe(applied, command.dryRun, result);
    result.json = VekTuningApply::json(applied);
    if (json_) {
        result.out = VekValueJson::dump(result.json) + '\n';
    }
    return result;
}

void VekCommandRunner::describe(const VekTuningApply::Result& applied, bool dry,
                                VekCommandResult& result) {
    result.status = applied.status;
    std::string failed;
    for (const VekTuningApply::Change& change : applied.changes) {
        result.out +=
            dry ? "" : change.label + ": " + change.from + " -> " + change.to + '\n';
    }
    for (const VekTuningApply::Failure& failure : applied.failures) {
        result.out += failure.label + ": " + failure.reason + '\n';
        failed += (failed.empty() ? "" : ", ") + failure.label;
    }
    if (dry) {
        for (const std::string& request : applied.requests) {
            result.out += request + '\n';
        }
        result.summary = plural(applied.requests.size(), "request", "requests") + " to send";
    } else if (applied.failures.empty()) {
        result.summary = applied.changes.empty()
                             ? "OK: nothing to set, the device matches"
                             : "OK: " + plural(applied.changes.size(), "value", "values") +
                                   " set, the device matches";
    } else {
        result.summary = "NG: " + std::to_string(applied.failures.size()) + " of " +
                         plural(applied.values, "value", "values") + " did not take (" + failed +
                         ')';
    }
    if (!applied.problem.empty()) {
        result.complain(applied.problem);
        result.summary = applied.problem;
    } else if (!dry) {
        result.out += result.summary + '\n';
    }
}

bool VekCommandRunner::side(const std::string& path, const Json* other, Json& settings,
                            VekCommandResult& result) {
    if (path != VekMasterCommand::kDevice) {
        Json document;
        if (!load(table_, path, document, result)) {
            return false;
        }
        settings = document["settings"];
        return true;
    }
    VekDeviceReading reading;
    if (!access_.read(other, reading)) {
        result.fail(VekExitStatus::of(access_.failure()), access_.failure().problem);
        return false;
    }
    settings = std::move(reading.settings);
    return true;
}

VekCommandResult VekCommandRunner::diff(const VekMasterCommand& command) {
    VekCommandResult result;
    // The documents first, so that the device is read for what they hold.
    const bool deviceFirst = command.paths[0] == VekMasterCommand::kDevice;
    Json sides[2];
    const int document = deviceFirst ? 1 : 0;
    if (!side(command.paths[document], nullptr, sides[document], result) ||
        !side(command.paths[1 - document], &sides[document], sides[1 - document], result)) {
        return result;
    }
    const std::vector<VekTuningDiff::Difference> differences =
        VekTuningDiff::compare(table_, sides[0], sides[1]);
    std::string lines;
    for (const VekTuningDiff::Difference& d : differences) {
        const std::string line = VekTuningDiff::line(d);
        result.out += line + '\n';
        lines += (lines.empty() ? "" : "; ") + line;
    }
    result.json = VekTuningDiff::json(differences);
    if (json_) {
        result.out = VekValueJson::dump(result.json) + '\n';
    }
    result.status = differences.empty() ? VekExitStatus::kOk : VekExitStatus::kNg;
    result.summary = differences.empty()
                         ? "equal"
                         : plural(differences.size(), "difference", "differences") + ": " + lines;
    return result;
}

bool VekCommandRunner::channelBands(const VekMasterCommand& command, VekChannelBands& bands,
                                    VekCommandResult& result) {
    if (!command.document.empty()) {
        Json document;
        if (!load(table_, command.document, document, result)) {
            return false;
        }
        const std::string problem = bands.take(document, command.channel);
        if (!problem.empty()) {
            result.fail(VekExitStatus::kUsage, command.document + ": " + problem);
        }
        return problem.empty();
    }
    const VekMasterReply* failed = nullptr;
    std::string problem;
    if (bands.read(access_, command.channel, failed, problem)) {
        return true;
    }
    if (failed == nullptr) {
        result.fail(VekExitStatus::kNg, problem);
    } else {
        result.fail(VekExitStatus::of(*failed),
                    failed->answered() ? failed->feature + ' ' + failed->message +
                                             " answered NG: the bands cannot be read"
                                       : failed->problem);
    }
    return false;
}

VekCommandResult VekCommandRunner::curve(const VekMasterCommand& command) {
    VekCommandResult result;
    VekChannelBands bands;
    if (!channelBands(command, bands, result)) {
        return result;
    }
    const std::shared_ptr<const VekDeviceProfile> profile = VekDeviceProfile::inUse();
    const size_t points = command.points != 0 ? command.points : VekResponseCurve::kDefaultPoints;
    // A device's curve names it as the server's route does; a document's names none.
    const Json curve = bands.curve(*profile, points, command.document.empty() ? index_ : -1);
    const std::string what = bands.feature + ' ' + bands.channel + ", " +
                             plural(bands.bands.size(), "band", "bands") + " (profile " +
                             profile->name() + ")";
    // The total's extremes: what a listener would notice first.
    const Json& total = curve["total"];
    size_t lo = 0;
    size_t hi = 0;
    for (size_t i = 0; i < total.size(); ++i) {
        lo = total[i].get<double>() < total[lo].get<double>() ? i : lo;
        hi = total[i].get<double>() > total[hi].get<double>() ? i : hi;
    }
    const auto at = [&](size_t i) {
        return VekValueJson::dump(total[i]) + " dB at " +
               VekValueJson::dump(VekValueJson::number(curve["frequencies"][i].get<double>(), 0)) +
               " Hz";
    };
    result.summary = what + ": " + at(lo) + " to " + at(hi);
    result.json = curve;
    if (!command.svg.empty()) {
        const std::string problem =
            writeFile(command.svg, VekCurvePlot::svg(curve, "Equaliser response: " + what));
        if (!problem.empty()) {
            return result.fail(VekExitStatus::kIo, problem);
        }
        result.summary += "; written to " + command.svg;
    }
    if (command.csv) {
        result.out = VekCurvePlot::csv(curve);
    } else if (json_) {
        result.out = VekValueJson::dump(curve) + '\n';
    } else {
        result.out = result.summary + '\n';
    }
    return result;
}

VekCommandResult VekCommandRunner::eqImport(const VekMasterCommand& command) {
    VekCommandResult result;
    VekFilterImport::Request request;
    request.source = command.paths[0];
    request.dryRun = command.dryRun;
    request.options.fit = command.fit;
    VekFilterImport::channels(command.channel, request.channels);
    if (!command.preamp.empty()) {
        VekFilterImport::preamp(command.preamp, request.options.preamp);
    }
    const std::string unreadable = VekScriptReader::load(command.paths[0], request.text);
    if (!unreadable.empty()) {
        return result.fail(VekExitStatus::kData, unreadable);
    }
    Json document;
    VekFilterImport::Outcome outcome;
    if (command.document.empty()) {
        outcome = VekFilterImport::toDevice(access_, request);
    } else {
        if (!load(table_, command.document, document, result)) {
            return result;
        }
        outcome = VekFilterImport::toDocument(document, request);
    }
    result.status = outcome.status;
    for (const std::string& problem : outcome.problems) {
        result.complain(problem);
    }
    if (!outcome.problems.empty()) {
        result.complain(command.paths[0] + ": nothing was sent" +
                        (command.fit ? "" : " (--fit clamps and drops what does not fit)"));
        result.summary = outcome.problems.front();
    } else if (!outcome.stopped.empty() && outcome.applied.problem.empty()) {
        result.complain(outcome.stopped);
        result.summary = outcome.stopped;
    }
    result.out = outcome.problems.empty() ? VekFilterImport::text(outcome) : "";
    if (outcome.problems.empty() && outcome.stopped.empty() && !command.document.empty()) {
        const std::string problem =
            command.dryRun ? "" : writeFile(command.document, VekValueJson::pretty(document));
        if (!problem.empty()) {
            return result.fail(VekExitStatus::kIo, problem);
        }
        result.summary = command.dryRun ? "the document would change"
                                        : "written to " + command.document;
        result.out += result.summary + '\n';
    } else if (outcome.problems.empty() && outcome.channels.size() == request.channels.size()) {
        describe(outcome.applied, command.dryRun, result);
    }
    result.json = VekFilterImport::json(outcome, VekResponseCurve::kDefaultPoints);
    if (json_) {
        result.out = VekValueJson::dump(result.json) + '\n';
    }
    return result;
}

VekCommandResult VekCommandRunner::eqExport(const VekMasterCommand& command) {
    VekCommandResult result;
    VekChannelBands bands;
    if (!channelBands(command, bands, result)) {
        return result;
    }
    const std::shared_ptr<const VekDeviceProfile> profile = VekDeviceProfile::inUse();
    const std::string what = bands.feature + ' ' + bands.channel + ", " +
                             plural(bands.bands.size(), "band", "bands") + " (profile " +
                             profile->name() + ", from " +
                             (command.document.empty() ? device_ : command.document) + ')';
    const VekFilterList::Form form =
        command.format == "rew" ? VekFilterList::Form::Rew : VekFilterList::Form::Apo;
    const std::string text = VekFilterWriter::write(bands.bands, *profile, form, what);
    result.summary = what;
    result.json = {{"feature", bands.feature},
                   {"channel", bands.channel},
                   {"format", form == VekFilterList::Form::Rew ? "rew" : "apo"},
                   {"text", text}};
    result.out = json_ ? VekValueJson::dump(result.json) + '\n' : text;
    return result;
}

}  // namespace vekmaster
