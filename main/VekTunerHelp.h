#pragma once

#include <string>

// vek_tuner's options as --help prints them. The manual page is made from the same
// table at build time, so the two cannot tell different stories.
class VekTunerHelp {
public:
    struct Option {
        const char* synopsis;  // "--device=deviceName [default=/dev/ttyUSB0]"
        const char* text;      // its lines, each ending in a line feed
    };

    static constexpr const char* kName = "vek_tuner";
    static constexpr const char* kSynopsis = "vek_tuner [OPTION]...";
    static constexpr const char* kDescription =
        "Run the slave of VEK(Dravino Audio Tuner).\n"
        "Mandatory arguments to long options ONLY.\n";
    static constexpr const char* kExitStatus = "0  - Success ALWAYS.\n";
    static constexpr Option kOptions[] = {
        {"--progress=progressName [default=vek_server]", "Name of current progress.\n"},
        {"--device=deviceName [default=/dev/ttyUSB0]", "Path of UART device.\n"},
        {"--baudRate=baudRate [default=115200]", "Speed of UART device.\n"},
        {"--eqMode=mode [default=0]", "0: Flexible EQ bands configured.\n1: Fixed 20 EQ bands.\n"},
        {"--reverb", "Enable reverb app effect or not.\n"},
        {"--help", "Help specification.\n"},
    };

    // The help text, every line behind the information tag.
    static std::string text();
};
