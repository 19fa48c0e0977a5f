#pragma once

#include <memory>
#include <string>
#include <vector>

#include "VekDaemonLauncher.h"
#include "VekMasterSession.h"
#include "VekSerialLine.h"
#include "VekSessionAccess.h"

namespace vekmaster {

class VekTraceSink;

// One device's connection: its line (a serial device, or the pseudo-terminal of a daemon
// started here), the session on it and the access through it, made and closed together,
// so that the command line, the server and Python wire a device the same way.
class VekDeviceConnection {
public:
    // A daemon starts and stops within a second or two; these only bound a broken one.
    static constexpr int kGreetingMs = 10000;
    static constexpr int kStopMs = 10000;

    struct Options {
        int baudRate = 115200;
        int timeoutMs = 2000;
        int window = VekMasterSession::kDefaultWindow;
        std::vector<VekTraceSink*> trace;  // where the line's traffic is copied
    };

    VekDeviceConnection() = default;
    VekDeviceConnection(const VekDeviceConnection&) = delete;
    VekDeviceConnection& operator=(const VekDeviceConnection&) = delete;

    // Opens the line at path; "" or why it cannot be used.
    std::string open(const std::string& path, const Options& options);
    // Starts a daemon on a pseudo-terminal (see VekDaemonLauncher::start); "" or why not.
    std::string startDaemon(const std::string& path, const std::vector<std::string>& args,
                            const std::string& log, const std::vector<std::string>& environment,
                            std::string& usedLog);
    // Waits for the started daemon's greeting, then opens the session on its line; what
    // came behind the greeting is the session's first input. "" or why not.
    std::string awaitDaemon(const Options& options);
    // Takes the pseudo-terminal of a daemon that is owned elsewhere (a virtual device) and
    // has greeted; device names it.
    void adopt(int fd, const std::string& device, const Options& options);
    // Closes the session and stops a daemon started here; false with the report when it
    // did not end cleanly. A connection without a daemon just closes.
    bool close(std::string& report);
    void close();

    bool isOpen() const { return access_ != nullptr; }
    bool launched() const { return launcher_ != nullptr; }
    const std::string& device() const { return device_; }
    VekSerialLine& line() { return *line_; }
    VekMasterSession& session() { return *session_; }
    VekSessionAccess& access() { return *access_; }

private:
    void start(const Options& options);

    std::string device_;
    std::unique_ptr<VekDaemonLauncher> launcher_;
    std::unique_ptr<VekSerialLine> line_;
    std::unique_ptr<VekMasterSession> session_;
    std::unique_ptr<VekSessionAccess> access_;
};

}  // namespace vekmaster
