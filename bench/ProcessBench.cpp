// Figure 4: the daemon as a process: start-up, idle CPU, peak memory.
#include <benchmark/benchmark.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "BenchSupport.h"
#include "PtyDaemon.h"

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// fork/exec on a pty until "HELLO!\n" arrives; the median of the repetitions counts.
void BM_StartToGreeting(benchmark::State& state) {
    for (auto _ : state) {
        const auto start = Clock::now();
        vekbench::PtyDaemon daemon;
        const bool greeted = daemon.awaitGreeting();
        state.SetIterationTime(secondsSince(start));
        if (!greeted) {
            state.SkipWithError("no greeting");
        }
    }
}
BENCHMARK(BM_StartToGreeting)
    ->Iterations(1)
    ->Repetitions(vekbench::smoke() ? 5 : 20)
    ->ReportAggregatesOnly()
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// utime + stime of a daemon left alone after its start-up.
void BM_IdleCpu(benchmark::State& state) {
    const double window = vekbench::smoke() ? 2 : 60;
    for (auto _ : state) {
        vekbench::PtyDaemon daemon;
        if (!daemon.awaitGreeting()) {
            state.SkipWithError("no greeting");
            break;
        }
        // The features are built after the greeting.
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        const double before = daemon.cpuSeconds();
        const auto start = Clock::now();
        std::this_thread::sleep_for(std::chrono::duration<double>(window));
        const double used = daemon.cpuSeconds() - before;
        const double elapsed = secondsSince(start);
        state.SetIterationTime(elapsed);
        state.counters["cpu_percent"] = 100 * used / elapsed;
    }
}
BENCHMARK(BM_IdleCpu)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

// VmHWM after a run of requests, every message the daemon serves with --reverb in
// turn, 32 outstanding.
void BM_PeakRss(benchmark::State& state) {
    const size_t total = vekbench::smoke() ? 1000 : 10000;
    const size_t window = 32;
    std::vector<std::string> frames;
    for (const auto& request : vekbench::allRequests()) {
        if (!request.fixedEq) {
            frames.push_back(request.frame);
        }
    }
    for (auto _ : state) {
        vekbench::PtyDaemon daemon({"--reverb"});
        if (!daemon.awaitGreeting()) {
            state.SkipWithError("no greeting");
            break;
        }
        const auto start = Clock::now();
        const bool answered = daemon.exchange(frames, total, window);
        state.SetIterationTime(secondsSince(start));
        if (!answered) {
            state.SkipWithError("a request was not answered");
            break;
        }
        state.counters["requests"] = static_cast<double>(total);
        state.counters["peak_rss_kib"] = static_cast<double>(daemon.statusKib("VmHWM"));
        // Of the resident memory, what is the daemon's own (heap, stacks), not mapped files.
        state.counters["rss_anon_kib"] = static_cast<double>(daemon.statusKib("RssAnon"));
    }
}
BENCHMARK(BM_PeakRss)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

}  // namespace
