#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "MasterRun.h"
#include "VirtualCable.h"

// The built daemon at the device end of a cable of its own, its output in a file; for
// tests that run vek_master against running daemons with --device, several at once. The
// cable stays: the daemon can be stopped and started again on the same line, as a device
// is restarted while the PC keeps its end open.
class CabledDaemon {
public:
    // args go to the daemon besides --device=; sim is AUDIO_SETTING_SIM ("" for none);
    // the cable is a pseudo-terminal pair unless paced or faulty options are given.
    explicit CabledDaemon(const std::vector<std::string>& args = {}, const std::string& sim = "",
                          const vekcable::VekCable::Options& cable = VirtualCable::plain());
    // Stops the daemon with SIGUSR1 (killing it if it does not end).
    ~CabledDaemon();
    CabledDaemon(const CabledDaemon&) = delete;
    CabledDaemon& operator=(const CabledDaemon&) = delete;

    // The daemon runs and has greeted.
    bool ready() const { return ready_; }
    // Starts it again after a stop; false when it runs already.
    bool start();
    // SIGUSR1 and the wait for its end: its exit status.
    int stop();
    // What vek_master opens.
    const std::string& path() const { return cable_.masterEnd(); }
    std::string log() const { return log_.read(); }
    const vekcable::VekCable& cable() const { return cable_; }

private:
    std::vector<std::string> args_;
    std::string sim_;
    vekcable::VekCable cable_;
    MasterRun::TempFile log_;
    pid_t pid_ = -1;
    bool ready_ = false;
};
