#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "MasterRun.h"
#include "VirtualCable.h"

// The built daemon at the device end of a cable that stays: it can be stopped with
// SIGUSR1 and started again on the same line, as a device is restarted while the PC
// keeps its end open. Its output, over every start, goes to one file.
class RestartableDaemon {
public:
    explicit RestartableDaemon(std::vector<std::string> args = {});
    ~RestartableDaemon();
    RestartableDaemon(const RestartableDaemon&) = delete;
    RestartableDaemon& operator=(const RestartableDaemon&) = delete;

    bool start();
    // SIGUSR1 and the wait for its end; its exit status.
    int stop();
    // What the server opens.
    const std::string& path() const { return cable_.masterEnd(); }
    std::string log() const { return log_.read(); }

private:
    std::vector<std::string> args_;
    VirtualCable cable_;
    MasterRun::TempFile log_;
    pid_t pid_ = -1;
};
