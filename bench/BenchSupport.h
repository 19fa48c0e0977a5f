#pragma once

#include <cstddef>
#include <string>
#include <vector>

// What the benchmarks share: the request frames and the files they read. The wiring in
// process is ServerRig, the built daemon on a pseudo-terminal PtyDaemon.
namespace vekbench {

// bench/run.sh --smoke sets VEK_BENCH_SMOKE=1: short windows, few requests.
bool smoke();

// A request frame as a master sends it, fields joined by ':' ("" for none):
// AS:1:0:<feature>:<message>Request:0:OK[:<fields>]:\n
std::string requestFrame(const std::string& feature, const std::string& message,
                         const std::string& fields = "");

// A file of the given size, made once per size in the temporary directory.
std::string benchFile(size_t size);

struct Request {
    bool fixedEq;  // served only with --eqMode=1
    std::string frame;
};
// One request of every message of every feature (tests/support/sample_requests.vek);
// FileContent reads a 1 KiB file.
const std::vector<Request>& allRequests();

}  // namespace vekbench
