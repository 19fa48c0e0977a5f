#include "VekCommandReader.h"

#include "VekChannelBands.h"
#include "VekFilterImport.h"

namespace vekmaster {

namespace {

using Verb = VekMasterCommand::Verb;

// "eq import FILE" with --channel=CH[,CH...], or "eq export CHANNEL".
std::string readEq(const std::vector<std::string>& words, VekMasterCommand& command) {
    const std::string mode = words.size() > 1 ? words[1] : "";
    if (mode == "import") {
        command.verb = Verb::EqImport;
        if (words.size() != 3 || command.channel.empty()) {
            return "eq import takes one filter file and the channels: eq import FILE "
                   "--channel=CH[,CH...]";
        }
        command.paths[0] = words[2];
        std::vector<std::string> channels;
        VekFilterFit::Preamp preamp = VekFilterFit::Preamp::Channel;
        std::string problem = VekFilterImport::channels(command.channel, channels);
        if (problem.empty() && !command.preamp.empty()) {
            problem = VekFilterImport::preamp(command.preamp, preamp);
        }
        if (!command.format.empty()) {
            problem = "--format goes with eq export";
        }
        return problem.empty() ? "" : "eq import: " + problem;
    }
    if (mode == "export") {
        command.verb = Verb::EqExport;
        if (words.size() != 3 || !command.channel.empty()) {
            return "eq export takes one channel: eq export CHANNEL (LF RF LS RS CF L1)";
        }
        command.channel = words[2];
        std::string problem = VekChannelBands::checkChannel(command.channel);
        if (!command.format.empty() && command.format != "apo" && command.format != "rew") {
            problem = "--format=" + command.format + " is not apo or rew";
        }
        if (command.fit || !command.preamp.empty() || command.dryRun) {
            problem = "--fit, --preamp and --dry-run go with eq import";
        }
        return problem.empty() ? "" : "eq export: " + problem;
    }
    return "eq takes import FILE --channel=CH[,CH...] or export CHANNEL";
}

}  // namespace

bool VekCommandReader::isVerb(const std::string& word) {
    return word == "snapshot" || word == "apply" || word == "diff" || word == "curve" ||
           word == "eq";
}

std::string VekCommandReader::read(const VekMessageCatalog& catalog,
                                   const VekDeviceProfile* limits,
                                   const std::vector<std::string>& words,
                                   VekMasterCommand& command) {
    const std::string verb = words.empty() ? "" : words[0];
    if (verb == "snapshot") {
        command.verb = Verb::Snapshot;
        if (words.size() != 1) {
            return "snapshot takes no operands (the document goes to --output=FILE)";
        }
    } else if (verb == "apply") {
        command.verb = Verb::Apply;
        if (words.size() != 2) {
            return "apply takes one document: apply FILE";
        }
        command.paths[0] = words[1];
    } else if (verb == "diff") {
        command.verb = Verb::Diff;
        if (words.size() != 3) {
            return "diff takes two tunings: diff A B (each a document or 'device')";
        }
        command.paths[0] = words[1];
        command.paths[1] = words[2];
        if (command.paths[0] == VekMasterCommand::kDevice &&
            command.paths[1] == VekMasterCommand::kDevice) {
            return "diff compares the device with a document, or two documents";
        }
    } else if (verb == "curve") {
        command.verb = Verb::Curve;
        if (words.size() != 2) {
            return "curve takes one channel: curve CHANNEL (LF RF LS RS CF L1)";
        }
        command.channel = words[1];
        const std::string problem = VekChannelBands::checkChannel(command.channel);
        if (!problem.empty()) {
            return "curve: " + problem;
        }
    } else if (verb == "eq") {
        const std::string problem = readEq(words, command);
        if (!problem.empty()) {
            return problem;
        }
    } else {
        const VekError problem = catalog.prepare(words, limits, command.request);
        if (problem) {
            return problem.text;
        }
        command.feature = command.request.message().feature;
        command.name = command.request.message().name;
        command.args = command.request.args();
    }
    const bool eq = command.verb == Verb::EqImport || command.verb == Verb::EqExport;
    if ((!command.svg.empty() || command.csv || command.points != 0) && command.verb != Verb::Curve) {
        return "--svg, --csv and --points go with curve";
    }
    if (!command.document.empty() && command.verb != Verb::Curve && !eq) {
        return "--document goes with curve and eq";
    }
    if (command.bypass && command.verb != Verb::Apply) {
        return "--bypass goes with apply";
    }
    if (command.dryRun && command.verb != Verb::Apply && command.verb != Verb::EqImport) {
        return "--dry-run goes with apply and eq import";
    }
    if (!eq && (command.fit || !command.preamp.empty() || !command.format.empty() ||
                (!command.channel.empty() && command.verb != Verb::Curve))) {
        return "--channel, --fit, --preamp and --format go with eq";
    }
    if (!command.output.empty() && (command.verb == Verb::Apply || command.verb == Verb::Diff)) {
        return "--output goes with snapshot or a message";
    }
    return "";
}

std::string VekCommandReader::readLine(const VekMessageCatalog& catalog,
                                       const VekDeviceProfile* limits,
                                       const std::vector<std::string>& words,
                                       VekMasterCommand& command) {
    static const std::string kOutput = "--output=";
    std::vector<std::string> rest;
    for (const std::string& word : words) {
        if (word.rfind(kOutput, 0) == 0 && word.size() > kOutput.size()) {
            command.output = word.substr(kOutput.size());
        } else if (word == "--dry-run") {
            command.dryRun = true;
        } else if (word == "--bypass") {
            command.bypass = true;
        } else if (word == "--csv") {
            command.csv = true;
        } else if (word.rfind("--svg=", 0) == 0 && word.size() > 6) {
            command.svg = word.substr(6);
        } else if (word.rfind("--document=", 0) == 0 && word.size() > 11) {
            command.document = word.substr(11);
        } else if (word.rfind("--channel=", 0) == 0 && word.size() > 10) {
            command.channel = word.substr(10);
        } else if (word.rfind("--preamp=", 0) == 0 && word.size() > 9) {
            command.preamp = word.substr(9);
        } else if (word.rfind("--format=", 0) == 0 && word.size() > 9) {
            command.format = word.substr(9);
        } else if (word == "--fit") {
            command.fit = true;
        } else if (word.rfind("--", 0) == 0) {
            return "a script line takes no option but --output=FILE, --dry-run, --bypass, "
                   "--svg=FILE, --csv, --document=FILE, --channel=, --fit, --preamp= and "
                   "--format=, not " +
                   word;
        } else {
            rest.push_back(word);
        }
    }
    return read(catalog, limits, rest, command);
}

}  // namespace vekmaster
