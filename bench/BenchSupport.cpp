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

#include "SampleRequests.h"

namespace vekbench {

bool smoke() {
    const char* value = std::getenv("VEK_BENCH_SMOKE");
    return value != nullptr && std::strcmp(value, "1") == 0;
}

std::string requestFrame(const std::string& feature, const std::string& message,
                         const std::string& fields) {
    // The fields already joined are one payload piece.
    const SampleRequests::Request request{feature, message, {}};
    return request.frame(1, fields.empty() ? std::vector<std::string>{} : std::vector{fields}, "");
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
        std::vector<Request> all;
        for (const SampleRequests::Request& r : SampleRequests::all()) {
            all.push_back({r.feature == "Eq", r.frame(1, benchFile(1024))});
        }
        return all;
    }();
    return requests;
}

}  // namespace vekbench
