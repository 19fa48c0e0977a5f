// Figure 1: the frame hub alone, fed as the server feeds it.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>

#include "BenchSupport.h"
#include "VekFrameHub.h"
#include "VekServer.h"

namespace {

using vekprotocol::VekFrameHub;

class FrameSink : public vekprotocol::VekSerDes {
public:
    void decode(const vekprotocol::VekFields&, const vekprotocol::VekFields&, std::stringstream&,
                uint32_t) override {
        ++frames;
    }
    int64_t frames = 0;
};

// Feeds frame in pieces of at most piece bytes per iteration.
void feedFrames(benchmark::State& state, const std::string& frame, size_t piece) {
    FrameSink sink;
    VekFrameHub hub(&sink, nullptr);
    hub.registerEndpoint("Gain", &sink);
    for (auto _ : state) {
        for (size_t at = 0; at < frame.size(); at += piece) {
            hub.feed(frame.data() + at, static_cast<uint32_t>(std::min(piece, frame.size() - at)));
        }
    }
    if (sink.frames != state.iterations()) {
        state.SkipWithError("frames lost");
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(frame.size()));
    state.counters["frames_per_s"] =
        benchmark::Counter(static_cast<double>(sink.frames), benchmark::Counter::kIsRate);
}

const std::string kSmall = vekbench::requestFrame("Gain", "SetChannel", "0:0:-3:-3:1.5:0");

void BM_HubSmallWhole(benchmark::State& state) {
    feedFrames(state, kSmall, kSmall.size());
}
BENCHMARK(BM_HubSmallWhole);

void BM_HubSmallByteByByte(benchmark::State& state) {
    feedFrames(state, kSmall, 1);
}
BENCHMARK(BM_HubSmallByteByByte);

// A 40 KB raw-data frame (the most the hub holds), in the server's 1024-byte reads.
void BM_HubRaw40K(benchmark::State& state) {
    const size_t raw = 40 * 1000;
    const std::string frame = "AS:1:0:Gain:SetChannelRequest:" + std::to_string(raw) +
                              ":OK:<0:0:-3:-3:1.5:0>:\n" + std::string(raw, 'x');
    feedFrames(state, frame, vekserver::VekServer::kReadSize);
}
BENCHMARK(BM_HubRaw40K);

}  // namespace
