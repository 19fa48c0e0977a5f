#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "VekFrameHub.h"

// Runs the built vek_tuner on a pseudo-terminal, as the master and the init system
// would drive it: frames in through the pty master, its output captured to a file.
class DaemonHarness {
public:
    struct Options {
        std::vector<std::string> args;  // besides --device=
        std::string sim;                // AUDIO_SETTING_SIM, unset when empty
        bool withDevice = true;         // pass --device=<pty slave>
    };

    explicit DaemonHarness(Options options);
    ~DaemonHarness();
    DaemonHarness(const DaemonHarness&) = delete;
    DaemonHarness& operator=(const DaemonHarness&) = delete;

    // Waits until the output holds text (after position from); true when it does.
    bool waitForOutput(const std::string& text,
                       std::chrono::milliseconds timeout = std::chrono::milliseconds(5000)) const;
    std::string output() const;
    // Output lines that start with prefix, in order.
    std::vector<std::string> lines(const std::string& prefix) const;

    void send(const std::string& bytes);
    // Waits until the daemon has read every byte sent so far; false on timeout. Bytes
    // sent after it returns come to the daemon in reads of their own.
    bool waitUntilTaken(std::chrono::milliseconds timeout = std::chrono::milliseconds(5000)) const;
    // The next complete frame from the daemon (the greeting and stray bytes are
    // skipped), or "" when none arrives in time.
    std::string nextFrame(std::chrono::milliseconds timeout = std::chrono::milliseconds(3000));
    // Sends a request and returns the one response frame.
    std::string request(const std::string& frame);
    // Reads the link until timeout and returns what arrived raw.
    std::string drain(std::chrono::milliseconds timeout);

    void signal(int signo) const;
    // Exit status (or 128 + signal), -1 on timeout.
    int waitExit(std::chrono::milliseconds timeout = std::chrono::milliseconds(5000));
    void closeMaster();
    const std::string& slavePath() const { return slavePath_; }
    pid_t pid() const { return pid_; }
    // The daemon's resident memory (VmRSS) in KiB, -1 when it cannot be read. In a cross
    // build the process is the emulator, running the daemon.
    long residentKb() const;
    // Built with ASan or TSan (like the daemon): their allocators hold freed blocks back
    // (ASan's quarantine up to 256 MiB) and map shadow memory as they go, so resident
    // memory then tells little about the daemon's own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    static constexpr bool kSanitized = true;
#else
    static constexpr bool kSanitized = false;
#endif

private:
    class Recorder;
    using Sink = std::function<void(const char*, size_t)>;

    // One poll and read of the pty master before deadline; false when nothing came.
    bool readOnce(std::chrono::steady_clock::time_point deadline, const Sink& sink);
    void readUntil(std::chrono::steady_clock::time_point deadline,
                   const std::function<bool()>& done, const Sink& sink);

    int master_ = -1;
    int slave_ = -1;
    std::string slavePath_;
    std::string logPath_;
    pid_t pid_ = -1;
    int status_ = -1;
    std::unique_ptr<Recorder> recorder_;
    std::unique_ptr<vekprotocol::VekFrameHub> hub_;
};
