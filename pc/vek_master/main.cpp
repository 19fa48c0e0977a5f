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
#include "VekDeviceConnection.h"
#include "VekDeviceProfile.h"
#include "VekDeviceRunner.h"
#include "VekExitStatus.h"
#include "VekMasterHelp.h"
#include "VekMasterOptions.h"
#include "VekMasterSession.h"
#include "VekScriptReader.h"
#include "VekSerialLine.h"
#include "VekSessionAccess.h"
#if VEK_MASTER_SERVE
#include "VekPanelAssets.h"
#include "VekRemoteAccess.h"
#include "VekServe.h"
#include "VekTokenFile.h"
#endif
#include "VekTraceCommand.h"
#include "VekTraceFile.h"
#include "VekVirtualDevice.h"

using namespace vekmaster;

namespace {

using Clock = std::chrono::steady_clock;
using Verb = VekMasterCommand::Verb;

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
        command.channel = options.channel;
        command.fit = options.fit;
        command.preamp = options.preamp;
        command.format = options.format;
        const std::string problem = VekCommandReader::read(catalog, limits, options.words, command);
        if (!problem.empty()) {
            return usage(problem);
        }
        const VekSettingsTable& table = VekSettingsTable::shared();
        // An import's file is filter text, read when it runs.
        for (const std::string& path : command.paths) {
            VekCommandResult result;
            VekValueJson::Json document;
            if (!path.empty() && path != "device" && command.verb != Verb::EqImport &&
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
            ((command.verb == Verb::Curve || command.verb == Verb::EqImport ||
              command.verb == Verb::EqExport) &&
             !command.document.empty());
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

// How vek_master's options open a line.
VekDeviceConnection::Options lineOptions(const VekMasterOptions& options, VekTraceSink* trace) {
    VekDeviceConnection::Options line;
    line.baudRate = options.baudRate;
    line.timeoutMs = options.timeoutMs;
    if (options.window > 0) {
        line.window = static_cast<int>(options.window);
    }
    if (trace != nullptr) {
        line.trace = {trace};
    }
    return line;
}

// The commands on a line of our own.
void runOnSession(VekMasterSession& session, VekDeviceAccess& access, const VekMasterOptions& options,
                  const std::vector<VekMasterCommand>& commands, bool several, DeviceRun& run) {
    if (!several) {
        showProgress(session);
    }
    session.setLimits(options.force ? nullptr : VekDeviceProfile::inUse());
    runCommands(access, session.catalog(), options, commands, several, run);
    run.traffic = session.traffic();
}

#if VEK_MASTER_SERVE
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
        const std::string problem = vekhttp::VekTokenFile::read(options.tokenFile, token);
        if (!problem.empty()) {
            complain(problem);
            return VekExitStatus::kIo;
        }
    }
    vekhttp::VekHttpClient client;
    const std::string problem = client.open(options.connect, token);
    if (!problem.empty()) {
        return usage("--connect=" + problem);
    }
    vekhttp::VekRemoteAccess access(client, options.deviceIndex);
    DeviceRun run;
    run.index = options.deviceIndex;
    runCommands(access, catalog, options, commands, false, run);
    return run.status;
}
#else
// A build for the command line alone (tools/try.sh's first build) leaves the HTTP side out.
int withoutHttp() {
    complain("this vek_master is built without serve and --connect; "
             "`cmake --preset default && cmake --build build` builds them");
    return VekExitStatus::kUsage;
}
int serve(VekMasterOptions&, VekTraceSink*) {
    return withoutHttp();
}
int runConnected(const VekMasterOptions&, const VekMessageCatalog&,
                 const std::vector<VekMasterCommand>&) {
    return withoutHttp();
}
#endif

std::string stats(const DeviceRun& run) {
    return "stats: " + std::to_string(run.traffic.requests) + " requests, " +
           std::to_string(run.traffic.bytesSent) + " bytes sent, " +
           std::to_string(run.traffic.bytesReceived) + " bytes received, " +
           std::to_string(run.ms) + " ms";
}

// The commands on a daemon's line of our own (launched or virtual).
int runOnConnection(VekDeviceConnection& connection, const VekMasterOptions& options,
                    const std::vector<VekMasterCommand>& commands) {
    DeviceRun run;
    run.device = connection.device();
    runOnSession(connection.session(), connection.access(), options, commands, false, run);
    if (options.stats) {
        print(stats(run) + '\n', stderr);
    }
    return run.status;
}

// The daemon's end: a run that went well still fails when the daemon did not stop cleanly.
int daemonEnded(bool clean, const std::string& report, int status) {
    std::fprintf(stderr, "%s\n", report.c_str());
    return status == VekExitStatus::kOk && !clean ? VekExitStatus::kDaemon : status;
}

int runLaunched(const VekMasterOptions& options, const std::vector<VekMasterCommand>& commands,
                VekTraceSink* trace) {
    VekDeviceConnection connection;
    std::string log;
    std::string problem = connection.startDaemon(options.launch, options.daemonArgs, options.log, {}, log);
    if (!problem.empty()) {
        complain(problem);
        return VekExitStatus::kDaemon;
    }
    std::fprintf(stderr, "daemon log: %s\n", log.c_str());
    problem = connection.awaitDaemon(lineOptions(options, trace));
    int status = VekExitStatus::kOk;
    if (!problem.empty()) {
        complain(problem);
        status = VekExitStatus::kDaemon;
    } else {
        status = runOnConnection(connection, options, commands);
    }
    std::string report;
    const bool clean = connection.close(report);
    return daemonEnded(clean, report, status);
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
    int status = VekExitStatus::kOk;
    {
        VekDeviceConnection connection;
        connection.adopt(device.line(), device.document(), lineOptions(options, trace));
        status = runOnConnection(connection, options, commands);
    }
    std::string report;
    const bool clean = device.stop(VekDeviceConnection::kStopMs, report);
    return daemonEnded(clean, report, status);
}

void runDevice(const VekMasterOptions& options, const std::vector<VekMasterCommand>& commands,
               bool several, VekTraceSink* trace, DeviceRun& run) {
    VekDeviceConnection connection;
    const std::string unusable = connection.open(run.device, lineOptions(options, trace));
    if (!unusable.empty()) {
        run.status = run.last.fail(VekExitStatus::kIo, unusable).status;
        if (!several) {
            print(run.last.err, stderr);
        }
        return;
    }
    if (!connection.line().latencyNote().empty()) {
        complain(connection.line().latencyNote());
    }
    runOnSession(connection.session(), connection.access(), options, commands, several, run);
}

}  // namespace

int main(int argc, char** argv) {
    VekMasterOptions options;
    std::string problem = options.parse(argc, argv);
    const VekMessageCatalog& catalog = VekMessageCatalog::shared();
    if (options.help) {
        print(VekMasterHelp::text(catalog));
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
        VekSessionAccess access(session, VekSettingsTable::shared(), "");
        DeviceRun run;
        runOnSession(session, access, options, commands, false, run);
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
