#pragma once

#include <cstdint>
#include <string>

namespace vekserver {

// Start-up settings, from the command line only.
struct VekServerConfig {
    int32_t baudRate = 115200;
    int32_t eqMode = 0;
    bool enReverb = false;
    std::string progressName = "vek_server";
    std::string device = "/dev/ttyUSB0";
};

}  // namespace vekserver
