#include <cstdio>
#include <string>
#include <vector>

#include "VekComplain.h"
#include "VekDaemonLauncher.h"
#include "VekExitStatus.h"
#include "VekLineSettings.h"
#include "VekMasterCommand.h"
#include "VekMasterOptions.h"
#include "VekMasterReply.h"
#include "VekMasterSession.h"
#include "VekMessageCatalog.h"
#include "VekScriptReader.h"
#include "VekSerialLine.h"

using namespace vekmaster;

namespace {

// A daemon starts and stops within a second or two; these only bound a broken one.
constexpr int kGreetingMs = 10000;
constexpr int kStopMs = 10000;

const char* const kTryHelp =
    "Try 'vek_master --help' for the options, the messages and their arguments.\n";

int usage(const std::string& problem) {
    complain(problem);
    std::fputs(kTryHelp, stderr);
    return VekExitStatus::kUsage;
}

void printHelp(const VekMessageCatalog& catalog) {
    std::printf(
        "Usage: vek_master [OPTION...] FEATURE MESSAGE [ARG...]\n"
        "       vek_master [OPTION...] --script=FILE [--keep-going]\n"
        "Sends requests to a vek_tuner slave over its serial line and prints the answers:\n"
        "the answer's fields as name=value lines, then OK or NG.\n"
        "\n"
        "Options:\n"
        "  --device=PATH   serial line to the slave (default /dev/ttyUSB0)\n"
        "  --baudRate=N    line speed (default 115200), one of\n"
        "                  %s\n"
        "  --timeout=MS    how long to wait for an answer (default 3000)\n"
        "  --json          print each answer as one JSON object on one line\n"
        "  --output=FILE   write the answer's raw data (Common FileContent) to FILE\n"
        "  --script=FILE   run the commands in FILE (- for standard input), one per line,\n"
        "                  over one connection; '#' starts a comment\n"
        "  --keep-going    with --script: go on after a command that failed\n"
        "  --launch=PATH   start the daemon PATH on a pseudo-terminal, run the commands\n"
        "                  against it and stop it; arguments after -- go to the daemon\n"
        "  --log=FILE      with --launch: append the daemon's output to FILE\n"
        "  --help          print this text\n"
        "\n"
        "Messages and their ARGs, in wire order (a list takes every ARG left):\n"
        "%s"
        "\n"
        "Exit status: 0 OK, 1 NG, 2 no answer in time, 64 bad usage, 69 the launched daemon\n"
        "did not greet or did not exit with 0, 74 the line, a file or the pty failed.\n",
        vektransport::VekLineSettings::rates().c_str(), catalog.help().c_str());
}

// Checks every command before the first one is sent, so that a typo in a script does
// not leave a tuning session half applied.
int prepare(const VekMasterOptions& options, const VekMessageCatalog& catalog,
            std::vector<VekMasterCommand>& commands) {
    if (options.script.empty()) {
        VekMasterCommand command;
        const std::string problem = catalog.prepare(options.words, command);
        if (!problem.empty()) {
            return usage(problem);
        }
        command.output = options.output;
        commands.push_back(command);
        return VekExitStatus::kOk;
    }
    std::string text;
    const std::string unreadable = VekScriptReader::load(options.script, text);
    if (!unreadable.empty()) {
        complain(unreadable);
        return VekExitStatus::kIo;
    }
    const std::string name = options.script == "-" ? "<stdin>" : options.script;
    bool bad = false;
    for (const VekScriptReader::Line& line : VekScriptReader::split(text)) {
        VekMasterCommand command;
        std::vector<std::string> words;
        std::string problem;
        for (const std::string& word : line.words) {
            static const std::string kOutput = "--output=";
            if (word.rfind(kOutput, 0) == 0 && word.size() > kOutput.size()) {
                command.output = word.substr(kOutput.size());
            } else if (word.rfind("--", 0) == 0) {
                problem = "a script line takes no option but --output=FILE, not " + word;
            } else {
                words.push_back(word);
            }
        }
        if (problem.empty()) {
            problem = catalog.prepare(words, command);
        }
        if (!problem.empty()) {
            complain(name + ':' + std::to_string(line.number) + ": " + problem);
            bad = true;
        }
        commands.push_back(command);
    }
    if (bad) {
        std::fputs(kTryHelp, stderr);
        return VekExitStatus::kUsage;
    }
    return VekExitStatus::kOk;
}

int runLaunched(const VekMasterOptions& options, VekMessageCatalog& catalog, VekMasterReply& reply,
                const std::vector<VekMasterCommand>& commands) {
    VekDaemonLauncher launcher;
    std::string log;
    std::string problem = launcher.start(options.launch, options.daemonArgs, options.log, log);
    if (!problem.empty()) {
        complain(problem);
        return VekExitStatus::kDaemon;
    }
    std::fprintf(stderr, "daemon log: %s\n", log.c_str());
    std::string rest;
    problem = launcher.awaitGreeting(kGreetingMs, rest);
    int status = VekExitStatus::kOk;
    if (!problem.empty()) {
        complain(problem);
        status = VekExitStatus::kDaemon;
    } else {
        VekSerialLine line;
        line.adopt(launcher.line());
        VekMasterSession session(line, catalog, reply, options.timeoutMs, options.baudRate,
                                 options.json);
        session.preload(rest);
        status = session.runAll(commands, !options.script.empty(), options.keepGoing);
    }
    std::string report;
    const bool clean = launcher.stop(kStopMs, report);
    std::fprintf(stderr, "%s\n", report.c_str());
    return status == VekExitStatus::kOk && !clean ? VekExitStatus::kDaemon : status;
}

}  // namespace

int main(int argc, char** argv) {
    VekMasterOptions options;
    const std::string problem = options.parse(argc, argv);
    VekMasterReply reply;
    VekMessageCatalog catalog(reply);
    if (options.help) {
        printHelp(catalog);
        return VekExitStatus::kOk;
    }
    if (!problem.empty()) {
        return usage(problem);
    }
    std::vector<VekMasterCommand> commands;
    const int prepared = prepare(options, catalog, commands);
    if (prepared != VekExitStatus::kOk) {
        return prepared;
    }
    if (!options.launch.empty()) {
        return runLaunched(options, catalog, reply, commands);
    }
    VekSerialLine line;
    const std::string unusable = line.open(options.device, options.baudRate);
    if (!unusable.empty()) {
        complain(unusable);
        return VekExitStatus::kIo;
    }
    VekMasterSession session(line, catalog, reply, options.timeoutMs, options.baudRate,
                             options.json);
    return session.runAll(commands, !options.script.empty(), options.keepGoing);
}
