#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "CapturingTransport.h"
#include "VekFrameHub.h"
#include "VekServer.h"

// What the benchmarks share: request frames, the daemon's wiring in process, and the
// built daemon on a pseudo-terminal. The benchmark binary's main (BenchSupport.cpp)
// sends standard output to /dev/null, as the services print their log lines there,
// and keeps the report on the original standard output.
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
// One request of every message of every feature; FileContent reads a 1 KiB file.
const std::vector<Request>& allRequests();

// The production wiring in process: a VekServer over a capturing transport, init()ed.
class ServerRig {
public:
    explicit ServerRig(int32_t eqMode = 0);
    ~ServerRig();
    // Feeds one request and forgets the captured response.
    void serve(const std::string& frame);
    // Response frames written so far.
    size_t responses() const { return transport_.writes.size(); }

private:
    CapturingTransport transport_;
    vekserver::VekServer server_;
};

// The built vek_tuner on a pseudo-terminal, its output sent to /dev/null; stopped
// with SIGUSR1 at destruction.
class PtyDaemon {
public:
    explicit PtyDaemon(const std::vector<std::string>& args = {});
    ~PtyDaemon();
    PtyDaemon(const PtyDaemon&) = delete;
    PtyDaemon& operator=(const PtyDaemon&) = delete;

    // Reads the line until "HELLO!\n" has arrived; false after timeoutMs.
    bool awaitGreeting(int timeoutMs = 5000);
    void send(const std::string& bytes);
    // Reads until count more response frames than awaited before have arrived (frames
    // that came early count); false after timeoutMs without a byte.
    bool awaitResponses(size_t count, int timeoutMs = 5000);
    pid_t pid() const { return pid_; }
    // utime + stime in seconds, from /proc/PID/stat.
    double cpuSeconds() const;
    // A "Vm...:" line of /proc/PID/status in KiB.
    long statusKib(const char* key) const;

private:
    class Counter;

    int master_ = -1;
    int slave_ = -1;  // held open, or the master reads a hang-up until the daemon opens it
    pid_t pid_ = -1;
    size_t awaited_ = 0;
    std::unique_ptr<Counter> counter_;
    std::unique_ptr<vekprotocol::VekFrameHub> hub_;
};

}  // namespace vekbench
