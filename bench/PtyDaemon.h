#pragma once

#include <sys/types.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "VekFrameHub.h"

namespace vekbench {

// The built vek_tuner (or the one VEK_BENCH_DAEMON names) on a pseudo-terminal, its
// output sent to /dev/null or to a file; stopped with SIGUSR1 at destruction.
class PtyDaemon {
public:
    explicit PtyDaemon(const std::vector<std::string>& args = {}, const std::string& output = "");
    ~PtyDaemon();
    PtyDaemon(const PtyDaemon&) = delete;
    PtyDaemon& operator=(const PtyDaemon&) = delete;

    // Reads the line until "HELLO!\n" has arrived; false after timeoutMs.
    bool awaitGreeting(int timeoutMs = 5000);
    void send(const std::string& bytes);
    // Reads until count more response frames than awaited before have arrived (frames
    // that came early count); false after timeoutMs without a byte.
    bool awaitResponses(size_t count, int timeoutMs = 5000);
    // Sends total requests, frames in turn, keeping window of them outstanding, and
    // waits for every answer; false when one does not come.
    bool exchange(const std::vector<std::string>& frames, size_t total, size_t window);
    pid_t pid() const { return pid_; }
    // utime + stime in seconds, from /proc/PID/stat.
    double cpuSeconds() const;
    // A "Vm...:" line of /proc/PID/status in KiB.
    long statusKib(const char* key) const;
    // A line of /proc/PID/io, such as "syscw" (write calls made so far); -1 when unread.
    long long ioCount(const char* key) const;
    // The daemon program started: VEK_BENCH_DAEMON, or the one built beside.
    static std::string program();

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
