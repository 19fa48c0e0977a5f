#include "VekCommandReader.h"

#include "VekChannelBands.h"

namespace vekmaster {

namespace {

using Verb = VekMasterCommand::Verb;

}  // namespace

bool VekCommandReader::isVerb(const std::string& word) {
    return word == "snapshot" || word == "apply" || word == "diff" || word == "curve";
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
    } else {
        const VekError problem = catalog.prepare(words, limits, command.request);
        if (problem) {
            return problem.text;
        }
        command.feature = command.request.message().feature;
        command.name = command.request.message().name;
        command.args = command.request.args();
    }
    if ((!command.svg.empty() || command.csv || !command.document.empty() || command.points != 0) &&
        command.verb != Verb::Curve) {
        return "--svg, --csv, --document and --points go with curve";
    }
    if ((command.dryRun || command.bypass) && command.verb != Verb::Apply) {
        return "--dry-run and --bypass go with apply";
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
        } else if (word.rfind("--", 0) == 0) {
            return "a script line takes no option but --output=FILE, --dry-run, --bypass, "
                   "--svg=FILE, --csv and --document=FILE, not " +
                   word;
        } else {
            rest.push_back(word);
        }
    }
    return read(catalog, limits, rest, command);
}

}  // namespace vekmaster
