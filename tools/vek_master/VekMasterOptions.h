#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vekmaster {

// vek_master's command line. Options may stand anywhere before "--"; everything else is
// FEATURE MESSAGE ARG... (a negative number is an ARG: options start with "--").
struct VekMasterOptions {
    std::string device = "/dev/ttyUSB0";
    int32_t baudRate = 115200;
    int timeoutMs = 3000;
    bool json = false;
    bool help = false;
    std::string script;  // a file, or "-" for standard input
    bool keepGoing = false;
    std::string launch;                   // the daemon to start on a pseudo-terminal
    std::string log;                      // where the launched daemon's output goes
    std::string output;                   // where the answer's raw data goes
    std::vector<std::string> words;       // FEATURE MESSAGE ARG...
    std::vector<std::string> daemonArgs;  // after "--"

    // "" or what is wrong with the command line.
    std::string parse(int argc, char** argv);
};

}  // namespace vekmaster
