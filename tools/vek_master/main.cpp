#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "VekCommandReader.h"
#include "VekCommandRunner.h"
#include "VekDaemonLauncher.h"
#include "VekDeviceProfile.h"
#include "VekDeviceRunner.h"
#include "VekExitStatus.h"
#include "VekLineSettings.h"
#include "VekMasterOptions.h"
#include "VekMasterSession.h"
#include "VekPanelAssets.h"
#include "VekScriptReader.h"
#include "VekSessionAccess.h"
#include "VekRemoteAccess.h"
#include "VekSerialLine.h"
#include "VekServe.h"
#include "VekTraceCommand.h"
#include "VekTraceFile.h"
#include "VekVirtualDevice.h"

using namespace vekmaster;

namespace {

using Clock = std::chrono::steady_clock;
using Verb = VekMasterCommand::Verb;

// A daemon starts and stops within a second or two; these only bound a broken one.
constexpr int kGreetingMs = 10000;
constexpr int kStopMs = 10000;
// Answers smaller than this arrive too fast for a progress line to help.
constexpr int64_t kProgressFrom = 4096;

const char* const kTryHelp =
    "Try 'vek_master --help' for the options, the messages and their arguments.\n";

void complain(const std::string& text) {
    std::fprintf(stderr, "vek_master: %s\n", text.c_str());
}

void print(const std::string& text, std::FILE* stream = stdout) {
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

int usage(const std::string& problem) {
    complain(problem);
    std::fputs(kTryHelp, stderr);
    return VekExitStatus::kUsage;
}

void printHelp(const VekMessageCatalog& catalog) {
    std::printf(
        "Usage: vek_master [OPTION...] FEATURE MESSAGE [ARG...]\n"
        "       vek_master [OPTION...] snapshot [--output=FILE]\n"
        "       vek_master [OPTION...] apply FILE [--dry-run] [--bypass]\n"
        "       vek_master [OPTION...] diff A B\n"
        "       vek_master [OPTION...] curve CHANNEL [--svg=FILE | --csv] [--document=FILE]\n"
        "       vek_master [OPTION...] --script=FILE [--keep-going]\n"
        "       vek_master serve [--device=PATH...] [--virtual=FILE...] [--listen=HOST:PORT]\n"
        "                        [--token-file=FILE] [--profile=FILE] [--state-dir=DIR]\n"
        "       vek_master trace show FILE [--json]\n"
        "       vek_master trace from-log LOG --output=FILE\n"
        "       vek_master trace replay FILE (--launch=DAEMON [-- ARGS] | --device=PATH)\n"
        "                        [--timing=original]\n"
        "Sends requests to a vek_tuner slave over its serial line and prints the answers:\n"
        "the answer's fields as name=value lines, then OK or NG.\n"
        "\n"
        "Tunings (JSON documents of format vek-tuning/1):\n"
        "  snapshot        read every setting the device reports into a document\n"
        "                  (standard output, or --output=FILE)\n"
        "  apply FILE      check the document, then set what differs on the device and\n"
        "                  read it back; each value set is printed as setting: old -> new\n"
        "  diff A B        print the values that differ, one per line as\n"
        "                  feature.setting[channel/band]: a -> b; A and B are each a\n"
        "                  document or the word device (the connected device)\n"
        "  curve CHANNEL   the equaliser response of a channel (LF RF LS RS CF L1) from\n"
        "                  its bands on the device, or in a document with --document=FILE:\n"
        "                  its lowest and highest point; --svg=FILE draws it, --csv prints\n"
        "                  frequency,total,band0,...; --points=N (16 to 2048, default 256)\n"
        "\n"
        "Options:\n"
        "  --device=PATH   serial line to the slave (default /dev/ttyUSB0); given several\n"
        "                  times, every command runs on every line at once, and each line\n"
        "                  prints one result line, its path first\n"
        "  --devices=FILE  the lines to use, one path a line ('#' starts a comment)\n"
        "  --baudRate=N    line speed (default 115200), one of\n"
        "                  %s\n"
        "  --timeout=MS    how long to wait for an answer (default 3000)\n"
        "  --window=N      requests a snapshot, apply, diff or curve keeps on the line at\n"
        "                  once (1 to 64, default 32; 1: each waits for the answer before)\n"
        "  --json          print each answer, apply result and diff as one JSON object\n"
        "  --output=FILE   write the answer's raw data (Common FileContent, any size) or the\n"
        "                  snapshot's document to FILE; with several devices a snapshot\n"
        "                  goes to one file per device in the directory FILE\n"
        "  --dry-run       with apply: print the requests it would send, send none\n"
        "  --bypass        with apply: hold the audio bypass on while applying, then\n"
        "                  restore it (to the document's value if it has one)\n"
        "  --script=FILE   run the commands in FILE (- for standard input), one per line,\n"
        "                  over one connection; '#' starts a comment; a line may carry\n"
        "                  --output=FILE, --dry-run and --bypass for its command\n"
        "  --keep-going    with --script: go on after a command that failed\n"
        "  --launch=PATH   start the daemon PATH on a pseudo-terminal, run the commands\n"
        "                  against it and stop it; arguments after -- go to the daemon\n"
        "  --log=FILE      with --launch: append the daemon's output to FILE\n"
        "  --virtual=FILE  a simulated device holding the tuning document FILE (the daemon\n"
        "                  beside vek_master, or --launch=PATH); FILE is not changed\n"
        "  --stats         at the end, print the requests and bytes sent and received\n"
        "  --connect=URL   run the commands through a running vek_master serve\n"
        "                  (http://HOST:PORT) instead of opening a line\n"
        "  --device-index=N  with --connect: the server's device N (default 0)\n"
        "  --token-file=FILE  the token a server needs (serve: the one it asks for)\n"
        "\n"
        "Serving (vek_master serve): keeps every line open and serves an HTTP and\n"
        "WebSocket API on them until SIGINT or SIGTERM, so that the panel, scripts and\n"
        "vek_master --connect share the devices. GET /api lists the routes.\n"
        "  --listen=HOST:PORT  where to listen (default 127.0.0.1:8741; another than a\n"
        "                  loopback address needs --token-file)\n"
        "  --queue=N       requests that may wait per line (default 64; more get 503)\n"
        "  --client-timeout=MS  for a client to send a request or take an answer\n"
        "                  (default 15000)\n"
        "  --virtual=FILE  also serve a simulated device holding FILE's tuning (repeatable);\n"
        "                  POST /api/devices/{n}/save writes it back (FILE.bak the old one)\n"
        "  --state-dir=DIR  where the journal of changes and the checkpoints are kept\n"
        "                  (default $XDG_STATE_HOME/vek_tuner)\n"
        "  --no-journal    keep no journal: a set message costs no reads before and after\n"
        "                  it, and there is no history, undo or checkpoint\n"
        "  --max-clients=N  connections open at once, WebSockets included (default\n"
        "                  256; more are answered 503 and closed)\n"
        "  --profile=FILE  the device profile: what band values mean and the range of\n"
        "                  every value (default: the built-in profile); a value outside\n"
        "                  its range is refused with status 64 and nothing is sent\n"
        "  --force         send a message's value outside the profile's range anyway (it\n"
        "                  says so on standard error)\n"
        "  --trace=FILE    write every frame each way on every line, and every stray\n"
        "                  byte, to the capture file FILE (pcapng; serve too)\n"
        "  --help          print this text\n"
        "\n"
        "Traces (pcapng capture files):\n"
        "  trace show FILE       print each packet: time (UTC), line, -> to the device or\n"
        "                        <- to the master, the frame; --json: one object a packet\n"
        "  trace from-log LOG    the daemon's receive and send dumps in LOG (its output,\n"
        "                        or journalctl -o short-iso-precise) as a trace, --output=FILE\n"
        "  trace replay FILE     send the master's frames again and compare every answer\n"
        "                        with the recorded one (not the numbers, times or paths);\n"
        "                        --timing=original keeps the recorded gaps; exit 1 on a\n"
        "                        difference\n"
        "\n"
        "Messages and their ARGs, in wire order (a list takes every ARG left):\n"
        "%s"
        "\n"
        "Exit status: 0 OK (snapshot complete, apply matched, diff equal), 1 NG (an answer\n"
        "NG, values missing, a value that did not take, tunings that differ), 2 no answer\n"
        "in time, 64 bad usage or a bad document (nothing sent), 69 the launched daemon did\n"
        "not greet or did not exit with 0, 74 the line, a file or the pty failed. With\n"
        "several devices: the worst (largest) of their statuses.\n",
        vektransport::VekLineSettings::rates().c_str(), catalog.help().c_str());
}

// Checks every command before the first one is sent, so that a typo in a script does
// not leave a tuning session half applied. A document named on the command line is
// read and checked too; those named in a script are read when their line runs, since
// an earlier line may write them.
int prepare(const VekMasterOptions& options, const VekMessageCatalog& catalog,
            const VekDeviceProfile* limits, std::vector<VekMasterCommand>& commands) {
    if (options.script.empty()) {
        VekMasterCommand command;
        command.output = options.output;
        command.dryRun = options.dryRun;
        command.bypass = options.bypass;
        command.document = options.document;
        command.svg = options.svg;
        command.csv = options.csv;
        command.points = static_cast<size_t>(options.points);
        const std::string problem = VekCommandReader::read(catalog, limits, options.words, command);
        if (!problem.empty()) {
            return usage(problem);
        }
        const VekSettingsTable& table = VekSettingsTable::shared();
        for (const std::string& path : command.paths) {
            VekCommandResult result;
            VekValueJson::Json document;
            if (!path.empty() && path != "device" &&
                !VekCommandRunner::load(table, path, document, result)) {
                print(result.err, stderr);
                return result.status;
            }
        }
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
        command.line = line.number;
        const std::string problem = VekCommandReader::readLine(catalog, limits, line.words, command);
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

// --profile=FILE: the ranges every value is checked against, for every command.
int useProfile(const std::string& path) {
    if (path.empty()) {
        return VekExitStatus::kOk;
    }
    if (::access(path.c_str(), R_OK) != 0) {
        complain("profile " + path + ": cannot be read: " + std::strerror(errno));
        return VekExitStatus::kIo;
    }
    auto profile = std::make_shared<VekDeviceProfile>();
    const std::string problem = profile->load(path);
    if (!problem.empty()) {
        complain(problem);
        return VekExitStatus::kUsage;
    }
    VekDeviceProfile::use(std::move(profile));
    return VekExitStatus::kOk;
}

// With --force a value outside the profile's ranges is sent, but never silently.
void warnForced(const VekMessageCatalog& catalog, const std::vector<VekMasterCommand>& commands) {
    for (const VekMasterCommand& command : commands) {
        const VekMasterMessage* message = catalog.find(command.feature, command.name);
        if (command.verb != Verb::Message || message == nullptr) {
            continue;
        }
        const VekError breach =
            VekDeviceProfile::inUse()->check(*message, command.args);
        if (breach) {
            complain("--force: " + breach.text + "; sending it anyway");
        }
    }
}

// Several devices write their snapshots into a directory, one file each.
std::string checkSeveral(const VekMasterOptions& options,
                         const std::vector<VekMasterCommand>& commands) {
    if (options.devices.size() < 2) {
        return "";
    }
    for (const VekMasterCommand& command : commands) {
        struct stat info {};
        const bool directory = stat(command.output.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
        if (command.verb == Verb::Snapshot && !directory) {
            return "with several devices, a snapshot needs --output=DIR, an existing directory";
        }
        if (command.verb != Verb::Snapshot && !command.output.empty()) {
            return "with several devices, --output goes with snapshot only";
        }
    }
    return "";
}

bool needsLine(const std::vector<VekMasterCommand>& commands) {
    for (const VekMasterCommand& command : commands) {
        const bool documentsOnly =
            (command.verb == Verb::Diff && command.paths[0] != "device" &&
             command.paths[1] != "device") ||
            (command.verb == Verb::Curve && !command.document.empty());
        if (!documentsOnly) {
            return true;
        }
    }
    return false;
}

// One device's run of the commands.
struct DeviceRun {
    std::string device;
    int index = 0;  // its place among the --device options, or the server's index
    int status = VekExitStatus::kOk;
    VekCommandResult last;  // the command that decided the status
    size_t ran = 0;
    VekMasterSession::Traffic traffic;
    int64_t ms = 0;
};

void showProgress(VekMasterSession& session) {
    if (isatty(STDERR_FILENO) != 1) {
        return;
    }
    session.setProgress(
        [](const VekMasterReply& reply, int64_t arrived, int64_t announced, bool done) {
            if (done) {
                std::fputs("\r\033[K", stderr);
            } else if (announced >= kProgressFrom) {
                std::fprintf(stderr, "\r%s %s: %lld of %lld bytes", reply.feature.c_str(),
                             reply.message.c_str(), static_cast<long long>(arrived),
                             static_cast<long long>(announced));
            }
        });
}

// Runs the commands in order and stops at the first failure unless keepGoing. With one
// device, each command's output is printed as it completes (a script's commands echoed
// before it); with several, nothing is printed here.
void runCommands(VekDeviceAccess& access, const VekMessageCatalog& catalog,
                 const VekMasterOptions& options, const std::vector<VekMasterCommand>& commands,
                 bool several, DeviceRun& run) {
    const auto start = Clock::now();
    VekCommandRunner runner(access, catalog, run.device, run.index, options.json, several);
    const bool script = !options.script.empty();
    for (const VekMasterCommand& command : commands) {
        if (!several && script && !options.json) {
            print("> " + command.text() + '\n');
        }
        VekCommandResult result = runner.run(command);
        ++run.ran;
        if (!several) {
            print(result.out);
            print(result.err, stderr);
        }
        if (script) {
            result.summary = (result.status == VekExitStatus::kOk
                                  ? ""
                                  : "line " + std::to_string(command.line) + ": ") +
                             result.summary;
        }
        const bool failed = result.status != VekExitStatus::kOk;
        if (run.ran == 1 || (failed && run.status == VekExitStatus::kOk)) {
            run.status = result.status;
            run.last = std::move(result);
        }
        if (failed && !options.keepGoing) {
            break;
        }
    }
    if (script && run.status == VekExitStatus::kOk) {
        run.last.summary = "OK (" + std::to_string(run.ran) + " commands)";
    }
    run.ms = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

// The commands on a line of our own.
void runOnSession(VekMasterSession& session, const VekMasterOptions& options,
                  const std::vector<VekMasterCommand>& commands, bool several, DeviceRun& run) {
    if (options.window > 0) {
        session.setWindow(static_cast<int>(options.window));
    }
    if (!several) {
        showProgress(session);
    }
    session.setLimits(options.force ? nullptr : VekDeviceProfile::inUse());
    VekSessionAccess access(session, VekSettingsTable::shared(), run.device);
    runCommands(access, session.catalog(), options, commands, several, run);
    run.traffic = session.traffic();
}

// vek_master serve: the lines, the listen address and the token, checked, then served.
int serve(VekMasterOptions& options, VekTraceSink* trace) {
    bool unreadable = false;
    std::string problem = options.resolveDevices(unreadable);
    if (unreadable) {
        complain(problem);
        return VekExitStatus::kIo;
    }
    vekserve::VekServeConfig config;
    if (problem.empty()) {
        problem = config.listen(options.listen.empty() ? vekserve::VekServeConfig::kDefaultListen
                                                       : options.listen);
    }
    if (!problem.empty()) {
        return usage(problem);
    }
    if (!options.tokenFile.empty()) {
        problem = config.readToken(options.tokenFile);
        if (!problem.empty()) {
            complain(problem);
            return VekExitStatus::kIo;
        }
    }
    if (!config.loopback() && config.token.empty()) {
        return usage("--listen=" + options.listen +
                     " lets other machines in: give --token-file=FILE, whose token every "
                     "client must then bring");
    }
    config.devices = options.devices;
    // The journal knows a virtual device by its document, wherever serve was started.
    for (const std::string& document : options.virtuals) {
        char* full = realpath(document.c_str(), nullptr);
        if (full == nullptr) {
            complain(document + ": " + std::strerror(errno));
            return VekExitStatus::kIo;
        }
        config.virtuals.emplace_back(full);
        std::free(full);
    }
    config.daemon = options.launch;
    config.stateDir = options.stateDir;
    config.journal = !options.noJournal;
    config.trace = trace;
    config.baudRate = options.baudRate;
    config.timeoutMs = options.timeoutMs;
    config.window = options.window > 0 ? static_cast<int>(options.window) : config.window;
    config.queueLimit = options.queue > 0 ? static_cast<size_t>(options.queue) : config.queueLimit;
    config.clientTimeoutMs =
        options.clientTimeoutMs > 0 ? static_cast<int>(options.clientTimeoutMs) : config.clientTimeoutMs;
    config.maxClients =
        options.maxClients > 0 ? static_cast<size_t>(options.maxClients) : config.maxClients;
    vekserve::VekStaticAssets panel;
    vekserve::VekPanelAssets::addTo(panel);
    return vekserve::VekServe(config, panel).run();
}

// The commands through a running server.
int runConnected(const VekMasterOptions& options, const VekMessageCatalog& catalog,
                 const std::vector<VekMasterCommand>& commands) {
    std::string token;
    if (!options.tokenFile.empty()) {
        vekserve::VekServeConfig reader;
        const std::string problem = reader.readToken(options.tokenFile);
        if (!problem.empty()) {
            complain(problem);
            return VekExitStatus::kIo;
        }
        token = reader.token;
    }
    vekserve::VekHttpClient client;
    const std::string problem = client.open(options.connect, token);
    if (!problem.empty()) {
        return usage("--connect=" + problem);
    }
    vekserve::VekRemoteAccess access(client, options.deviceIndex);
    DeviceRun run;
    run.index = options.deviceIndex;
    runCommands(access, catalog, options, commands, false, run);
    return run.status;
}

std::string stats(const DeviceRun& run) {
    return "stats: " + std::to_string(run.traffic.requests) + " requests, " +
           std::to_string(run.traffic.bytesSent) + " bytes sent, " +
           std::to_string(run.traffic.bytesReceived) + " bytes received, " +
           std::to_string(run.ms) + " ms";
}

// The commands on a daemon of our own, greeted already; rest is what came behind the
// greeting.
int runOnPty(int fd, const std::string& device, const std::string& rest,
             const VekMasterOptions& options, const std::vector<VekMasterCommand>& commands,
             VekTraceSink* trace) {
    VekSerialLine line;
    line.adopt(fd);
    if (trace != nullptr) {
        line.trace({trace}, device);
        line.noteReceived("HELLO!\n" + rest);
    }
    VekMasterSession session(line, options.timeoutMs);
    session.preload(rest);
    DeviceRun run;
    run.device = device;
    runOnSession(session, options, commands, false, run);
    if (options.stats) {
        print(stats(run) + '\n', stderr);
    }
    return run.status;
}

// The daemon's end: a run that went well still fails when the daemon did not stop cleanly.
template <typename Daemon>
int stopDaemon(Daemon& daemon, int status) {
    std::string report;
    const bool clean = daemon.stop(kStopMs, report);
    std::fprintf(stderr, "%s\n", report.c_str());
    return status == VekExitStatus::kOk && !clean ? VekExitStatus::kDaemon : status;
}

int runLaunched(const VekMasterOptions& options, const std::vector<VekMasterCommand>& commands,
                VekTraceSink* trace) {
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
        status = runOnPty(launcher.line(), launcher.device(), rest, options, commands, trace);
    }
    return stopDaemon(launcher, status);
}

// The commands on a device made from a document; the document itself stays as it was.
int runVirtual(const VekMasterOptions& options, const std::vector<VekMasterCommand>& commands,
               VekTraceSink* trace) {
    VekVirtualDevice device;
    const std::string problem = device.start(VekVirtualDevice::daemonPath(options.launch),
                                             options.virtuals.front(), options.log,
                                             options.timeoutMs);
    if (!problem.empty()) {
        complain(problem);
        return VekExitStatus::kDaemon;
    }
    const int status = runOnPty(device.line(), device.document(), "", options, commands, trace);
    return stopDaemon(device, status);
}

void runDevice(const VekMasterOptions& options, const std::vector<VekMasterCommand>& commands,
               bool several, VekTraceSink* trace, DeviceRun& run) {
    VekSerialLine line;
    if (trace != nullptr) {
        line.trace({trace}, run.device);
    }
    const std::string unusable = line.open(run.device, options.baudRate);
    if (unusable.empty() && !line.latencyNote().empty()) {
        complain(line.latencyNote());
    }
    if (!unusable.empty()) {
        run.status = run.last.fail(VekExitStatus::kIo, unusable).status;
        if (!several) {
            print(run.last.err, stderr);
        }
        return;
    }
    VekMasterSession session(line, options.timeoutMs);
    runOnSession(session, options, commands, several, run);
}

}  // namespace

int main(int argc, char** argv) {
    VekMasterOptions options;
    std::string problem = options.parse(argc, argv);
    const VekMessageCatalog& catalog = VekMessageCatalog::shared();
    if (options.help) {
        printHelp(catalog);
        return VekExitStatus::kOk;
    }
    if (!problem.empty()) {
        return usage(problem);
    }
    const int profiled = useProfile(options.profile);
    if (profiled != VekExitStatus::kOk) {
        return profiled;
    }
    if (options.tracing()) {
        problem = VekTraceCommand::check(options);
        if (!problem.empty()) {
            return usage(problem);
        }
        std::string out;
        std::string err;
        const int status = VekTraceCommand::run(options, out, err);
        print(out);
        print(err, stderr);
        return status;
    }
    VekTraceFile traceFile;
    VekTraceSink* trace = nullptr;
    if (!options.trace.empty()) {
        problem = traceFile.open(options.trace);
        if (!problem.empty()) {
            complain(problem);
            return VekExitStatus::kIo;
        }
        trace = &traceFile;
    }
    if (options.serving()) {
        return serve(options, trace);
    }
    std::vector<VekMasterCommand> commands;
    const auto profile = VekDeviceProfile::inUse();
    const int prepared = prepare(options, catalog, options.force ? nullptr : profile.get(), commands);
    if (prepared != VekExitStatus::kOk) {
        return prepared;
    }
    if (options.force) {
        warnForced(catalog, commands);
    }
    bool unreadable = false;
    problem = options.resolveDevices(unreadable);
    if (unreadable) {
        complain(problem);
        return VekExitStatus::kIo;
    }
    if (!problem.empty()) {
        return usage(problem);
    }
    problem = checkSeveral(options, commands);
    if (!problem.empty()) {
        return usage(problem);
    }
    if (!options.virtuals.empty()) {
        return runVirtual(options, commands, trace);
    }
    if (!options.launch.empty()) {
        return runLaunched(options, commands, trace);
    }
    if (!options.connect.empty() && needsLine(commands)) {
        return runConnected(options, catalog, commands);
    }
    if (!needsLine(commands)) {
        // Documents only (two compared, a curve drawn from one): no device is involved.
        VekSerialLine none;
        VekMasterSession session(none, options.timeoutMs);
        DeviceRun run;
        runOnSession(session, options, commands, false, run);
        return run.status;
    }
    const bool several = options.devices.size() > 1;
    std::vector<DeviceRun> runs(options.devices.size());
    for (size_t i = 0; i < runs.size(); ++i) {
        runs[i].device = options.devices[i];
        runs[i].index = static_cast<int>(i);
    }
    VekDeviceRunner::forEach(runs.size(),
                             [&](size_t i) { runDevice(options, commands, several, trace, runs[i]); });
    int worst = VekExitStatus::kOk;
    for (const DeviceRun& run : runs) {
        worst = std::max(worst, run.status);
        if (several && options.json) {
            VekValueJson::Json line = {{"device", run.device}, {"exit", run.status}};
            line.update(run.last.json);
            line["device"] = run.device;  // a curve's index gives way to the path here
            print(VekValueJson::dump(line) + '\n');
        } else if (several) {
            print(run.device + ": " + run.last.summary + '\n');
        }
        if (options.stats) {
            print((several ? run.device + ": " : "") + stats(run) + '\n', stderr);
        }
    }
    return worst;
}
