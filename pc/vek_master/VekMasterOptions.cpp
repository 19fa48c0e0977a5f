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

std::string msRange() {
    return "a number of milliseconds (1 to " + std::to_string(kMaxTimeoutMs) + ")";
}

struct Flag {
    const char* name;
    bool VekMasterOptions::*field;
};

struct Text {
    const char* prefix;
    std::string VekMasterOptions::*field;
};

struct Number {
    const char* prefix;
    long VekMasterOptions::*field;
    long low, high;
    const char* what;
};

constexpr Flag kFlags[] = {
    {"--json", &VekMasterOptions::json},       {"--help", &VekMasterOptions::help},
    {"--keep-going", &VekMasterOptions::keepGoing}, {"--stats", &VekMasterOptions::stats},
    {"--dry-run", &VekMasterOptions::dryRun},  {"--bypass", &VekMasterOptions::bypass},
    {"--force", &VekMasterOptions::force},     {"--csv", &VekMasterOptions::csv},
    {"--fit", &VekMasterOptions::fit},
    {"--no-journal", &VekMasterOptions::noJournal},
};

constexpr Text kTexts[] = {
    {"--profile=", &VekMasterOptions::profile},     {"--svg=", &VekMasterOptions::svg},
    {"--document=", &VekMasterOptions::document},   {"--devices=", &VekMasterOptions::devicesFile},
    {"--script=", &VekMasterOptions::script},       {"--launch=", &VekMasterOptions::launch},
    {"--log=", &VekMasterOptions::log},             {"--output=", &VekMasterOptions::output},
    {"--listen=", &VekMasterOptions::listen},       {"--token-file=", &VekMasterOptions::tokenFile},
    {"--connect=", &VekMasterOptions::connect},     {"--trace=", &VekMasterOptions::trace},
    {"--timing=", &VekMasterOptions::timing},       {"--channel=", &VekMasterOptions::channel},
    {"--preamp=", &VekMasterOptions::preamp},       {"--format=", &VekMasterOptions::format},
    {"--state-dir=", &VekMasterOptions::stateDir},
};

constexpr Number kNumbers[] = {
    {"--points=", &VekMasterOptions::points, 16, 2048, "a number of points (16 to 2048)"},
    {"--queue=", &VekMasterOptions::queue, 1, 100000, "a number of requests (1 to 100000)"},
    {"--client-timeout=", &VekMasterOptions::clientTimeoutMs, 1, kMaxTimeoutMs, nullptr},
    {"--max-clients=", &VekMasterOptions::maxClients, 1, 100000,
     "a number of connections (1 to 100000)"},
    {"--window=", &VekMasterOptions::window, 1, 64, "a number of requests (1 to 64)"},
};

// The entry of a table whose name the argument is (flags) or starts with (valued options).
template <typename Entry, size_t N>
const Entry* find(const Entry (&table)[N], const char* arg, const char*& value) {
    for (const Entry& entry : table) {
        value = VekOption::valueAfter(arg, entry.prefix);
        if (value != nullptr) {
            return &entry;
        }
    }
    return nullptr;
}

const Flag* findFlag(const char* arg) {
    for (const Flag& flag : kFlags) {
        if (std::strcmp(arg, flag.name) == 0) {
            return &flag;
        }
    }
    return nullptr;
}

}  // namespace

std::string VekMasterOptions::parse(int argc, char** argv) {
    int i = 1;
    for (; i < argc; ++i) {
        const char* arg = argv[i];
        const char* value = nullptr;
        long number = 0;
        const Flag* flag = nullptr;
        const Text* text = nullptr;
        const Number* numeric = nullptr;
        if (std::strcmp(arg, "--") == 0) {
            ++i;
            break;
        } else if (std::strncmp(arg, "--", 2) != 0) {
            words.emplace_back(arg);
        } else if ((flag = findFlag(arg)) != nullptr) {
            this->*flag->field = true;
        } else if ((text = find(kTexts, arg, value)) != nullptr) {
            this->*text->field = value;
        } else if ((numeric = find(kNumbers, arg, value)) != nullptr) {
            if (!readNumber(value, numeric->low, numeric->high, this->*numeric->field)) {
                return std::string(numeric->prefix) + value + " is not " +
                       (numeric->what != nullptr ? std::string(numeric->what) : msRange());
            }
        } else if ((value = VekOption::valueAfter(arg, "--device=")) != nullptr) {
            devices.emplace_back(value);
        } else if ((value = VekOption::valueAfter(arg, "--virtual=")) != nullptr) {
            virtuals.emplace_back(value);
        } else if ((value = VekOption::valueAfter(arg, "--baudRate=")) != nullptr) {
            speed_t speed = 0;
            if (!readNumber(value, 0, INT32_MAX, number) ||
                !vektransport::VekLineSettings::speedFor(static_cast<int32_t>(number), speed)) {
                return std::string("--baudRate=") + value + " is not a speed of the line (" +
                       vektransport::VekLineSettings::rates() + ")";
            }
            baudRate = static_cast<int32_t>(number);
            lineTuned = true;
        } else if ((value = VekOption::valueAfter(arg, "--timeout=")) != nullptr) {
            if (!readNumber(value, 1, kMaxTimeoutMs, number)) {
                return std::string("--timeout=") + value + " is not " + msRange();
            }
            timeoutMs = static_cast<int>(number);
            lineTuned = true;
        } else if ((value = VekOption::valueAfter(arg, "--device-index=")) != nullptr) {
            if (!readNumber(value, 0, 1000000, number)) {
                return std::string("--device-index=") + value + " is not a device index (0, 1, ...)";
            }
            deviceIndex = static_cast<int>(number);
        } else {
            return std::string("unknown option ") + arg;
        }
        if (value != nullptr && *value == '\0') {
            return std::string(arg) + " needs a value";
        }
    }
    daemonArgs.assign(argv + i, argv + argc);

    const std::string served = checkServing();
    if (!served.empty()) {
        return served;
    }
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
    if (curving() && (words.empty() || (words[0] != "curve" && words[0] != "eq"))) {
        return "--svg, --csv, --document and --points go with curve; --channel, --fit, "
               "--preamp and --format with eq";
    }
    if (!svg.empty() && csv) {
        return "give either --svg=FILE or --csv, not both";
    }
    if (launch.empty() && (!log.empty() || !daemonArgs.empty())) {
        return "--log and DAEMON-ARGS need --launch";
    }
    if (!virtuals.empty() && !daemonArgs.empty()) {
        return "a virtual device's daemon takes its options from the document, not after --";
    }
    if (!serving() && !launch.empty() && (!devices.empty() || !devicesFile.empty())) {
        return "--device and --launch exclude each other";
    }
    if (!serving() && !virtuals.empty() && (!devices.empty() || !devicesFile.empty())) {
        return "--virtual and --device go together with serve only";
    }
    if (!serving() && virtuals.size() > 1) {
        return "--virtual is given once, but with serve";
    }
    if (!serving() && (!stateDir.empty() || noJournal)) {
        return "--state-dir and --no-journal go with serve";
    }
    if (!timing.empty() && !tracing()) {
        return "--timing goes with trace replay";
    }
    return "";
}

std::string VekMasterOptions::checkServing() const {
    if (serving()) {
        if (words.size() > 1) {
            return "serve takes no operands (the lines are --device=PATH)";
        }
        if (!launch.empty() && virtuals.empty()) {
            return "serve takes --launch=DAEMON only for its --virtual devices";
        }
        if (!script.empty() || !connect.empty() || json || stats ||
            keepGoing || dryRun || bypass || !output.empty() || force || curving()) {
            return "serve takes --device, --devices, --virtual, --baudRate, --timeout, --window, "
                   "--listen, --token-file, --queue, --client-timeout, --max-clients, "
                   "--profile, --trace, --state-dir, --no-journal and --launch";
        }
        return "";
    }
    if (!listen.empty() || queue != 0 || clientTimeoutMs != 0 || maxClients != 0) {
        return "--listen, --queue, --client-timeout and --max-clients go with serve";
    }
    if (connect.empty()) {
        if (!tokenFile.empty() || deviceIndex != 0) {
            return "--token-file and --device-index go with serve or --connect";
        }
        return "";
    }
    if (!devices.empty() || !devicesFile.empty() || !launch.empty() || !virtuals.empty()) {
        return std::string("--connect and --device, --devices or --launch exclude each other") +
               (virtuals.empty() ? "" : "; so does --virtual");
    }
    if (!trace.empty()) {
        return "--trace does not go with --connect: the server's line is not ours to capture "
               "(give it to vek_master serve, or download GET /api/devices/{n}/trace)";
    }
    if (force) {
        return "--force does not go with --connect: the server checks every value against "
               "its own profile";
    }
    if (lineTuned || stats || window != 0) {
        return "--baudRate, --timeout, --window and --stats are the server's with --connect "
               "(give them to vek_master serve)";
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
    if (devices.empty() && launch.empty() && virtuals.empty()) {
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
