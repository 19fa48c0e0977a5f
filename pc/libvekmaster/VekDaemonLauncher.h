#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace vekmaster {

// Runs the daemon on one end of a pseudo-terminal pair and hands the other end to the
// master, as a cable would: for trying the link on a PC without a device.
class VekDaemonLauncher {
public:
    VekDaemonLauncher() = default;
    // A daemon still running is killed: it must not outlive the tool that started it.
    ~VekDaemonLauncher();
    VekDaemonLauncher(const VekDaemonLauncher&) = delete;
    VekDaemonLauncher& operator=(const VekDaemonLauncher&) = delete;

    // Entries NAME=VALUE the daemon gets in its environment on top of this process's
    // (the simulator's AUDIO_SETTING_SIM, say), without changing this process's own.
    void setEnvironment(std::vector<std::string> entries) { environment_ = std::move(entries); }
    // Starts path with args and --device= the pty's slave end, its output appended to
    // logPath, or to a new file in $TMPDIR (or /tmp) when logPath is empty; usedLog
    // names the file. "" or the reason it could not start.
    std::string start(const std::string& path, const std::vector<std::string>& args,
                      const std::string& logPath, std::string& usedLog);
    // Reads the line until the daemon's greeting; rest gets what came behind it.
    std::string awaitGreeting(int timeoutMs, std::string& rest);
    // The master end of the pair, for the session.
    int line() const { return master_; }
    // The slave end's path, which the daemon opened.
    const std::string& device() const { return device_; }
    // Asks the daemon to stop (SIGUSR1) and waits for it, killing it after timeoutMs;
    // report says how it ended. Returns true when it exited with status 0.
    bool stop(int timeoutMs, std::string& report);

private:
    // Collects the daemon's status once it has ended (waiting for it when wait is set);
    // true when it has.
    bool reap(bool wait);

    int master_ = -1;
    int slave_ = -1;
    pid_t pid_ = -1;
    std::string device_;
    std::vector<std::string> environment_;
    std::string report_;
    bool exitedCleanly_ = false;
};

}  // namespace vekmaster
