#include "BenchSupport.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <thread>

namespace vekbench {

bool smoke() {
    const char* value = std::getenv("VEK_BENCH_SMOKE");
    return value != nullptr && std::strcmp(value, "1") == 0;
}

std::string requestFrame(const std::string& feature, const std::string& message,
                         const std::string& fields) {
    return "AS:1:0:" + feature + ':' + message + "Request:0:OK" +
           (fields.empty() ? "" : ":<" + fields + '>') + ":\n";
}

namespace {

// Removes the files benchFile made when the process ends.
struct BenchFiles {
    ~BenchFiles() {
        for (const auto& file : paths) {
            std::remove(file.second.c_str());
        }
    }
    std::map<size_t, std::string> paths;
};

}  // namespace

std::string benchFile(size_t size) {
    // Benchmarks are registered during static initialisation and may ask for a file.
    static BenchFiles files;
    std::string& path = files.paths[size];
    if (path.empty()) {
        const char* dir = std::getenv("TMPDIR");
        path = std::string(dir != nullptr ? dir : "/tmp") + "/vek_bench_" +
               std::to_string(getpid()) + '_' + std::to_string(size) + ".xml";
        std::string content(size, 'x');
        for (size_t i = 63; i < size; i += 64) {
            content[i] = '\n';
        }
        std::ofstream(path, std::ios::binary) << content;
    }
    return path;
}

const std::vector<Request>& allRequests() {
    static const std::vector<Request> requests = [] {
        // feature, message, fields; the values of tools/tour.vek where it has them.
        const char* const table[][3] = {
            {"Common", "Version", "M1.0"},
            {"Common", "Feature", ""},
            {"Common", "FileList", "Gain"},
            {"Common", "FileContent", nullptr},  // the 1 KiB file
            {"Common", "GetBypass", ""},
            {"Common", "SetBypass", "0"},
            {"Gain", "GetMaster", ""},
            {"Gain", "SetMaster", "-10"},
            {"Gain", "GetChannel", ""},
            {"Gain", "SetChannel", "0:0:-3:-3:1.5:0"},
            {"Gain", "GetFadeBalance", ""},
            {"Gain", "SetFadeBalance", "2:-1:15"},
            {"Reverb", "GetEnable", ""},
            {"Reverb", "GetMode", ""},
            {"Reverb", "SetMode", "1"},
            {"Eq", "GetEnable", ""},
            {"Eq", "SetEnable", "1"},
            {"Eq", "GetBandCount", ""},
            {"Eq", "GetBandConfig", "CF:7"},
            {"Eq", "SetBandConfig", "CF:7:2:1000:-3.5:0.707:0:1"},
            {"EqV2", "GetEnable", ""},
            {"EqV2", "SetEnable", "1"},
            {"EqV2", "GetBandCount", ""},
            {"EqV2", "SetBandCount", "10:10:5:5:3:0"},
            {"EqV2", "GetBandConfig", "CF:7"},
            {"EqV2", "SetBandConfig", "CF:7:2:1000:-3.5:0.707:0:1"},
            {"Hfe", "GetEnable", ""},
            {"Hfe", "SetEnable", "1"},
            {"Hfe", "GetChannelConfig", "LF"},
            {"Hfe", "SetChannelConfig", "LF:1:0:1:0.5"},
            {"Vb", "GetEnable", ""},
            {"Vb", "SetEnable", "1"},
            {"Vb", "GetChannelConfig", "LF"},
            {"Vb", "SetChannelConfig", "LF:1:2:0.5:1:100:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0"},
            {"Speaker", "GetEnable", ""},
            {"Speaker", "SetEnable", "1:1:1:1:1:1"},
            {"Speaker", "GetDelay", ""},
            {"Speaker", "SetDelay", "0:0:1.5:1.5:0.25:0"},
            {"Speaker", "SetStylePattern", "LF:1"},
            {"Speaker", "SetSinePattern", "LF:1000"},
        };
        std::vector<Request> all;
        for (const auto& row : table) {
            const std::string fields = row[2] != nullptr ? row[2] : benchFile(1024);
            all.push_back({std::strcmp(row[0], "Eq") == 0, requestFrame(row[0], row[1], fields)});
        }
        return all;
    }();
    return requests;
}

}  // namespace vekbench
