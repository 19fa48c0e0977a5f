// Figure 3: the built daemon end to end over a pseudo-terminal.
#include <benchmark/benchmark.h>

#include "BenchSupport.h"
#include "PtyDaemon.h"

namespace {

// Round trips of Gain GetMaster with state.range(0) requests outstanding.
void BM_RoundTrips(benchmark::State& state) {
    const auto outstanding = static_cast<size_t>(state.range(0));
    vekbench::PtyDaemon daemon;
    if (!daemon.awaitGreeting()) {
        state.SkipWithError("no greeting");
        return;
    }
    const std::string frame = vekbench::requestFrame("Gain", "GetMaster");
    for (size_t i = 1; i < outstanding; ++i) {
        daemon.send(frame);
    }
    for (auto _ : state) {
        daemon.send(frame);
        if (!daemon.awaitResponses(1)) {
            state.SkipWithError("no response");
            break;
        }
    }
    daemon.awaitResponses(outstanding - 1);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_RoundTrips)->ArgName("outstanding")->Arg(1)->Arg(32)->UseRealTime();

}  // namespace
