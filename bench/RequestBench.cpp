// Figure 2: one request in process through the production wiring: feed, decode,
// service on the simulator, encode, one write to a capturing transport.
#include <benchmark/benchmark.h>

#include <string>

#include "BenchSupport.h"
#include "ServerRig.h"

namespace {

using vekbench::requestFrame;

void serveOne(benchmark::State& state, const std::string& frame) {
    vekbench::ServerRig rig;
    for (auto _ : state) {
        rig.serve(frame);
    }
    if (rig.responses() != 1) {
        state.SkipWithError("no response");
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(frame.size()));
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK_CAPTURE(serveOne, GainGetMaster, requestFrame("Gain", "GetMaster"));
BENCHMARK_CAPTURE(serveOne, EqV2SetBandConfig,
                  requestFrame("EqV2", "SetBandConfig", "CF:7:2:1000:-3.5:0.707:0:1"));
BENCHMARK_CAPTURE(serveOne, VbSetChannelConfig,
                  requestFrame("Vb", "SetChannelConfig",
                               "LF:1:2:0.5:1:100:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0"));
BENCHMARK_CAPTURE(serveOne, FileContent40K,
                  requestFrame("Common", "FileContent", vekbench::benchFile(40 * 1000)));

// The capacity figure: one request of every message of every feature in turn, Eq on
// a second server with --eqMode=1 (a daemon serves EqV2 or Eq, never both).
void BM_ServeAllFeatures(benchmark::State& state) {
    vekbench::ServerRig flexible(0);
    vekbench::ServerRig fixed(1);
    const auto& requests = vekbench::allRequests();
    int64_t bytes = 0;
    for (const auto& request : requests) {
        bytes += static_cast<int64_t>(request.frame.size());
    }
    size_t answered = 0;
    for (auto _ : state) {
        answered = 0;
        for (const auto& request : requests) {
            vekbench::ServerRig& rig = request.fixedEq ? fixed : flexible;
            rig.serve(request.frame);
            answered += rig.responses();
        }
    }
    if (answered != requests.size()) {
        state.SkipWithError("a request was not answered");
    }
    state.SetBytesProcessed(state.iterations() * bytes);
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(requests.size()));
}
BENCHMARK(BM_ServeAllFeatures);

}  // namespace
