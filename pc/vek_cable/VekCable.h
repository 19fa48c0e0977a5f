#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "VekCableModel.h"

namespace vekcable {

// Two pseudo-terminals joined back to back through a model of a USB-to-UART cable, one
// model per direction: what a program writes at one end comes out at the other when the
// wire and the receiving bridge would have handed it over. Each end has a path (and,
// when asked for, a symbolic link to it), so a daemon and vek_master open them by name
// as they would a serial port. Both slave ends stay open here too, so a program that
// closes its end does not hang the cable up; a pull does: both ends are closed and
// their links removed, and after a while new ends come back under the same links.
class VekCable {
public:
    // Which way bytes go.
    enum Direction { ToMaster = 0, ToDevice = 1 };

    struct Fault {
        Direction direction = ToMaster;
        VekCableModel::Fault kind = VekCableModel::Fault::Noise;
        int64_t atMs = -1;      // from the start, or
        int64_t atByte = -1;    // from this byte of the direction's stream on
        size_t count = 1;
    };
    struct Pull {
        int64_t atMs = 0;     // from the start, or
        int64_t atByte = -1;  // once the device has sent this many bytes
        int64_t forMs = 500;
    };
    struct Options {
        VekCableModel::Settings toMaster;  // the PC's bridge receives these bytes
        VekCableModel::Settings toDevice;  // the device's bridge receives these
        std::string deviceLink;            // "" for none
        std::string masterLink;
        std::vector<Fault> faults;
        std::vector<Pull> pulls;
    };
    struct Counters {
        uint64_t bytes[2] = {0, 0};  // handed over, by direction
        uint64_t packets[2] = {0, 0};
        uint64_t noisy[2] = {0, 0};
        uint64_t dropped[2] = {0, 0};
        uint64_t lost[2] = {0, 0};  // under way when the cable was pulled
        uint64_t pulls = 0;
    };

    explicit VekCable(const Options& options);
    ~VekCable();
    VekCable(const VekCable&) = delete;
    VekCable& operator=(const VekCable&) = delete;

    // "" when both ends are up, or why not.
    const std::string& problem() const { return problem_; }
    bool ok() const { return problem_.empty(); }
    // What the daemon and the master open: the links when given, else the ends.
    const std::string& deviceEnd() const { return paths_[0]; }
    const std::string& masterEnd() const { return paths_[1]; }
    // Waits until the device end has sent its greeting; true when it has.
    bool awaitGreeting(int timeoutMs) const;
    Counters counters() const;
    // Ends the relay (the destructor does too).
    void stop();

private:
    bool openEnds();
    void closeEnds();
    void relay();

    Options options_;
    VekCableModel models_[2];
    int masters_[2] = {-1, -1};
    int slaves_[2] = {-1, -1};
    std::string paths_[2];
    std::string problem_;
    std::atomic<bool> running_{true};
    std::atomic<bool> greeted_{false};
    mutable std::mutex mutex_;  // the models and counters, read by counters()
    Counters counters_;
    std::thread thread_;
};

}  // namespace vekcable
