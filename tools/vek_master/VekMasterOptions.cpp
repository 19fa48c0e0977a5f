#include "VekMasterOptions.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "VekLineSettings.h"
#include "VekOption.h"
#include "VekScriptReader.h"

namespace vekmaster {

using vekprotocol::VekOption;

namespace {

constexpr long kMaxTimeoutMs = 3600000;

// The whole text as a decimal number in [low, high].
bool readNumber(const char* text, long low, long high, long& value) {
    char* end = nullptr;
    errno = 0;
    value = std::strtol(text, &end, 10);
    return end != text && *end == '\0' && errno == 0 && value >= low && value <= high;
}

}  // namespace

std::string VekMasterOptions::parse(int argc, char** argv) {
    int i = 1;
    for (; i < argc; ++i) {
        const char* arg = argv[i];
        const char* value = nullptr;
        long number = 0;
        if (std::strcmp(arg, "--") == 0) {
            ++i;
            break;
        } else if (std::strncmp(arg, "--", 2) != 0) {
            words.emplace_back(arg);
        } else if (std::strcmp(arg, "--json") == 0) {
            json = true;
        } else if (std::strcmp(arg, "--help") == 0) {
            help = true;
        } else if (std::strcmp(arg, "--keep-going") == 0) {
            keepGoing = true;
        } else if (std::strcmp(arg, "--stats") == 0) {
            stats = true;
        } else if (std::strcmp(arg, "--dry-run") == 0) {
            dryRun = true;
        } else if (std::strcmp(arg, "--bypass") == 0) {
            bypass = true;
        } else if ((value = VekOption::valueAfter(arg, "--device=")) != nullptr) {
            devices.emplace_back(value);
        } else if ((value = VekOption::valueAfter(arg, "--devices=")) != nullptr) {
            devicesFile = value;
        } else if ((value = VekOption::valueAfter(arg, "--baudRate=")) != nullptr) {
            speed_t speed = 0;
            if (!readNumber(value, 0, INT32_MAX, number) ||
                !vektransport::VekLineSettings::speedFor(static_cast<int32_t>(number), speed)) {
                return std::string("--baudRate=") + value + " is not a speed of the line (" +
                       vektransport::VekLineSettings::rates() + ")";
            }
            baudRate = static_cast<int32_t>(number);
        } else if ((value = VekOption::valueAfter(arg, "--timeout=")) != nullptr) {
            if (!readNumber(value, 1, kMaxTimeoutMs, number)) {
                return std::string("--timeout=") + value +
                       " is not a number of milliseconds (1 to " + std::to_string(kMaxTimeoutMs) +
                       ")";
            }
            timeoutMs = static_cast<int>(number);
        } else if ((value = VekOption::valueAfter(arg, "--script=")) != nullptr) {
            script = value;
        } else if ((value = VekOption::valueAfter(arg, "--launch=")) != nullptr) {
            launch = value;
        } else if ((value = VekOption::valueAfter(arg, "--log=")) != nullptr) {
            log = value;
        } else if ((value = VekOption::valueAfter(arg, "--output=")) != nullptr) {
            output = value;
        } else {
            return std::string("unknown option ") + arg;
        }
        if (value != nullptr && *value == '\0') {
            return std::string(arg) + " needs a value";
        }
    }
    daemonArgs.assign(argv + i, argv + argc);

    if (!script.empty() && !words.empty()) {
        return "give either --script or FEATURE MESSAGE [ARG...], not both";
    }
    if (script.empty() && words.empty()) {
        return "expected FEATURE MESSAGE [ARG...] or --script=FILE";
    }
    if (keepGoing && script.empty()) {
        return "--keep-going needs --script";
    }
    if (!output.empty() && !script.empty()) {
        return "--output goes on the script line of its command";
    }
    if ((dryRun || bypass) && !script.empty()) {
        return "--dry-run and --bypass go on the script line of their apply";
    }
    if (launch.empty() && (!log.empty() || !daemonArgs.empty())) {
        return "--log and DAEMON-ARGS need --launch";
    }
    if (!launch.empty() && (!devices.empty() || !devicesFile.empty())) {
        return "--device and --launch exclude each other";
    }
    return "";
}

std::string VekMasterOptions::resolveDevices(bool& unreadable) {
    unreadable = false;
    if (!devicesFile.empty()) {
        std::string text;
        const std::string problem = VekScriptReader::load(devicesFile, text);
        if (!problem.empty()) {
            unreadable = true;
            return problem;
        }
        // One path a line, as the script reader splits lines: blanks and '#' comments.
        const std::vector<VekScriptReader::Line> lines = VekScriptReader::split(text);
        if (lines.empty()) {
            return devicesFile + " names no device";
        }
        for (const VekScriptReader::Line& line : lines) {
            devices.push_back(line.words.front());
        }
    }
    if (devices.empty() && launch.empty()) {
        devices.emplace_back(kDefaultDevice);
    }
    // Two threads on one line would take each other's answers.
    for (size_t i = 0; i < devices.size(); ++i) {
        for (size_t j = i + 1; j < devices.size(); ++j) {
            if (devices[i] == devices[j]) {
                return devices[i] + " is named twice";
            }
        }
    }
    return "";
}

}  // namespace vekmaster
