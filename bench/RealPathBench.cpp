// Figure 5: what one served request costs the built daemon on its real path: a
// pseudo-terminal, standard output to a regular file (as under a service manager that
// keeps a log), a window of requests outstanding over every default feature's
// messages. CPU time from /proc/PID/stat, write calls from /proc/PID/io (syscw): the
// response to the line and every log line or dump that leaves the process.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "BenchSupport.h"
#include "PtyDaemon.h"

namespace {

void BM_RealPath(benchmark::State& state) {
    const size_t total = vekbench::smoke() ? 1000 : 30000;
    const size_t window = 32;
    std::vector<std::string> frames;
    for (const auto& request : vekbench::allRequests()) {
        // A default daemon serves EqV2 and no Reverb.
        if (!request.fixedEq && request.frame.find(":Reverb:") == std::string::npos) {
            frames.push_back(request.frame);
        }
    }
    const char* dir = std::getenv("TMPDIR");
    const std::string log = std::string(dir != nullptr ? dir : "/tmp") + "/vek_bench_realpath_" +
                            std::to_string(getpid()) + ".log";
    for (auto _ : state) {
        vekbench::PtyDaemon daemon({}, log);
        if (!daemon.awaitGreeting()) {
            state.SkipWithError("no greeting");
            break;
        }
        // The features are built after the greeting.
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        const double cpu = daemon.cpuSeconds();
        const long long writes = daemon.ioCount("syscw");
        const auto start = std::chrono::steady_clock::now();
        const bool answered = daemon.exchange(frames, total, window);
        const double elapsed =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        const double usedCpu = daemon.cpuSeconds() - cpu;
        const long long madeWrites = daemon.ioCount("syscw") - writes;
        state.SetIterationTime(elapsed);
        if (!answered || writes < 0) {
            state.SkipWithError(answered ? "/proc/PID/io cannot be read"
                                         : "a request was not answered");
            break;
        }
        const auto n = static_cast<double>(total);
        state.counters["requests"] = n;
        state.counters["cpu_us_per_request"] = 1e6 * usedCpu / n;
        state.counters["writes_per_request"] = static_cast<double>(madeWrites) / n;
        state.counters["requests_per_s"] = n / elapsed;
    }
    std::remove(log.c_str());
}
BENCHMARK(BM_RealPath)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

}  // namespace
