#pragma once

#include <string>
#include <vector>

#include "VekDaemonLauncher.h"
#include "VekValueJson.h"

namespace vekmaster {

// A device made from a tuning document: the daemon on the simulated platform, launched on
// a pseudo-terminal with the features the document needs (the fixed equaliser, Reverb)
// and then brought to the document's tuning by an apply, which reads every value back.
// Only the document's values differ from the simulator's start; nothing else does.
class VekVirtualDevice {
public:
    using Json = VekValueJson::Json;

    // The daemon to run: given, or vek_tuner beside this program, or on PATH.
    static std::string daemonPath(const std::string& given);
    // The daemon's options for a document's tuning.
    static std::vector<std::string> optionsFor(const Json& document);
    // Writes a document to path; a file already there is kept as path.bak. backup gets
    // that name, or "" when there was none. "" or why it could not be written.
    static std::string save(const std::string& path, const Json& document, std::string& backup);
    // Reads and checks a tuning document; "" or why it cannot be used.
    static std::string load(const std::string& path, Json& document);

    // Launches daemon and applies the document at path; "" or why the device could not
    // be made (the daemon is stopped again then).
    std::string start(const std::string& daemon, const std::string& path, const std::string& log,
                      int timeoutMs);
    // The master end of the pseudo-terminal, owned here.
    int line() const { return launcher_.line(); }
    const std::string& document() const { return path_; }
    const std::string& daemonLog() const { return log_; }
    // Stops the daemon; report says how it ended.
    bool stop(int timeoutMs, std::string& report) { return launcher_.stop(timeoutMs, report); }

private:
    VekDaemonLauncher launcher_;
    std::string path_;
    std::string log_;
};

}  // namespace vekmaster
