#include "VekTraceCommand.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>

#include "VekDaemonLauncher.h"
#include "VekExitStatus.h"
#include "VekPcapng.h"
#include "VekTraceFile.h"
#include "VekTraceFrame.h"
#include "VekTraceLog.h"
#include "VekTraceReplay.h"
#include "VekValueJson.h"

namespace vekmaster {

namespace {

constexpr int kGreetingMs = 10000;
constexpr int kStopMs = 10000;

int failed(std::string& err, const std::string& problem, int status) {
    err += "vek_master: " + problem + '\n';
    return status;
}

bool readFile(const std::string& path, std::string& bytes, std::string& problem) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        problem = "cannot read " + path + ": " + std::strerror(errno);
        return false;
    }
    bytes.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    return true;
}

}  // namespace

std::string VekTraceCommand::check(const VekMasterOptions& options) {
    const std::vector<std::string>& w = options.words;
    const std::string usage =
        "expected trace show FILE, trace from-log LOG --output=FILE or trace replay FILE "
        "(--launch=DAEMON | --device=PATH)";
    if (w.size() != 3) {
        return usage;
    }
    if (w[1] == "show" || w[1] == "from-log") {
        if (w[1] == "from-log" && options.output.empty()) {
            return "trace from-log needs --output=FILE";
        }
        if (!options.launch.empty() || !options.devices.empty() || !options.timing.empty()) {
            return "--launch, --device and --timing go with trace replay";
        }
        return "";
    }
    if (w[1] != "replay") {
        return usage;
    }
    if (options.launch.empty() == options.devices.empty()) {
        return "trace replay needs either --launch=DAEMON or --device=PATH";
    }
    if (options.devices.size() > 1) {
        return "trace replay takes one --device";
    }
    if (!options.timing.empty() && options.timing != "original" && options.timing != "answered") {
        return "--timing=" + options.timing + " is not original or answered";
    }
    return "";
}

std::string VekTraceCommand::time(int64_t timeUs) {
    if (timeUs == 0) {
        return "-";
    }
    const std::time_t seconds = static_cast<std::time_t>(timeUs / 1000000);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char text[64];
    const size_t n = std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &utc);
    std::snprintf(text + n, sizeof(text) - n, ".%06lld",
                  static_cast<long long>(timeUs % 1000000));
    return text;
}

int VekTraceCommand::run(const VekMasterOptions& options, std::string& out, std::string& err) {
    const std::string& verb = options.words[1];
    if (verb == "show") {
        return show(options, out, err);
    }
    if (verb == "from-log") {
        return fromLog(options, out, err);
    }
    return replay(options, out, err);
}

int VekTraceCommand::show(const VekMasterOptions& options, std::string& out, std::string& err) {
    VekTrace trace;
    const std::string problem = VekPcapng::load(options.words[2], trace);
    if (!problem.empty()) {
        return failed(err, problem, VekExitStatus::kIo);
    }
    const VekMessageCatalog& catalog = VekMessageCatalog::shared();
    for (const VekTracePacket& p : trace.packets) {
        const std::string& line = trace.lines[p.line];
        if (!options.json) {
            out += time(p.timeUs) + ' ' + line + (p.outbound ? " -> " : " <- ") +
                   (p.stray ? "stray " : "") + VekTraceFrame::text(p.bytes) + '\n';
            continue;
        }
        VekValueJson::Json j = {{"time", time(p.timeUs)},
                                {"timeUs", p.timeUs},
                                {"line", line},
                                {"direction", p.outbound ? "to-device" : "to-master"},
                                {"stray", p.stray},
                                {"frame", VekTraceFrame::text(p.bytes)}};
        const VekTraceFrame f = VekTraceFrame::parse(p.bytes);
        if (f.frame && !p.stray) {
            j["feature"] = f.feature();
            j["message"] = f.message();
            j["status"] = f.status();
            j["rawData"] = f.raw.size();
            VekValueJson::Json fields = VekValueJson::Json::object();
            for (const auto& field : f.named(catalog)) {
                fields[field.first] = field.second;
            }
            j["fields"] = fields;
        }
        out += VekValueJson::dump(j) + '\n';
    }
    return VekExitStatus::kOk;
}

int VekTraceCommand::fromLog(const VekMasterOptions& options, std::string& out, std::string& err) {
    std::string log;
    std::string problem;
    if (!readFile(options.words[2], log, problem)) {
        return failed(err, problem, VekExitStatus::kIo);
    }
    VekTrace trace;
    const size_t found = VekTraceLog::read(log, trace);
    std::ofstream file(options.output, std::ios::binary | std::ios::trunc);
    const std::string bytes = VekPcapng::encode(trace);
    if (!file || !file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())) ||
        !file.flush()) {
        return failed(err, "cannot write " + options.output + ": " + std::strerror(errno),
                      VekExitStatus::kIo);
    }
    out += options.output + ": " + std::to_string(found) + " frames from " +
           std::to_string(trace.lines.size()) + (trace.lines.size() == 1 ? " line\n" : " lines\n");
    return found == 0 ? failed(err, options.words[2] + " holds no frame dump", VekExitStatus::kNg)
                      : VekExitStatus::kOk;
}

int VekTraceCommand::replay(const VekMasterOptions& options, std::string& out, std::string& err) {
    VekTrace trace;
    std::string problem = VekPcapng::load(options.words[2], trace);
    if (!problem.empty()) {
        return failed(err, problem, VekExitStatus::kIo);
    }
    uint32_t line = 0;
    while (line < trace.lines.size()) {
        bool sends = false;
        for (const VekTracePacket& p : trace.packets) {
            sends = sends || (p.line == line && p.outbound && !p.stray);
        }
        if (sends) {
            break;
        }
        ++line;
    }
    if (line >= trace.lines.size()) {
        return failed(err, options.words[2] + " holds no frame from the master", VekExitStatus::kUsage);
    }
    if (trace.lines.size() > 1) {
        err += "vek_master: replaying the frames of " + trace.lines[line] + ", the first of " +
               std::to_string(trace.lines.size()) + " lines in the trace\n";
    }
    VekTraceFile capture;
    if (!options.trace.empty()) {
        problem = capture.open(options.trace);
        if (!problem.empty()) {
            return failed(err, problem, VekExitStatus::kIo);
        }
    }
    VekDaemonLauncher launcher;
    VekSerialLine serial;
    std::string path;
    if (!options.launch.empty()) {
        std::string log;
        problem = launcher.start(options.launch, options.daemonArgs, options.log, log);
        std::string rest;
        if (problem.empty()) {
            err += "daemon log: " + log + '\n';
            problem = launcher.awaitGreeting(kGreetingMs, rest);
        }
        if (!problem.empty()) {
            return failed(err, problem, VekExitStatus::kDaemon);
        }
        serial.adopt(launcher.line());
        path = launcher.device();
    } else {
        path = options.devices[0];
        problem = serial.open(path, options.baudRate);
        if (!problem.empty()) {
            return failed(err, problem, VekExitStatus::kIo);
        }
    }
    if (!options.trace.empty()) {
        serial.trace({&capture}, path);
    }
    VekTraceReplay::Options how;
    how.originalTiming = options.timing == "original";
    how.timeoutMs = options.timeoutMs;
    VekTraceReplay replayer;
    const VekTraceReplay::Result result = replayer.run(trace, line, serial, how);
    for (const std::string& difference : result.differences) {
        out += difference + '\n';
    }
    out += "replayed " + std::to_string(result.requests) + " requests: " +
           std::to_string(result.differences.size()) +
           (result.differences.size() == 1 ? " difference\n" : " differences\n");
    int status = result.differences.empty() ? VekExitStatus::kOk : VekExitStatus::kNg;
    if (!result.failure.empty()) {
        status = failed(err, result.failure, VekExitStatus::kIo);
    }
    if (!options.launch.empty()) {
        std::string report;
        const bool clean = launcher.stop(kStopMs, report);
        err += report + '\n';
        if (!clean && status == VekExitStatus::kOk) {
            status = VekExitStatus::kDaemon;
        }
    }
    return status;
}

}  // namespace vekmaster
