// vek_cable: a serial cable with a USB-to-UART bridge at each end, between two
// pseudo-terminals, for feeling the real line's pace and faults without one.
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "VekCable.h"

namespace {

using vekcable::VekCable;
using vekcable::VekCableModel;

const char kUsage[] =
    "Usage: vek_cable [OPTION...]\n"
    "Joins two pseudo-terminals as a USB-to-UART cable joins a PC and a device: each way\n"
    "paced at the baud rate (8N1) and handed over by the receiving bridge in packets of up\n"
    "to 62 bytes, when full or when its latency timer runs out. Prints both ends' paths,\n"
    "relays until SIGTERM or SIGINT, then prints its counters.\n"
    "  --baud=N               the wire's rate (default 115200; 0: no wire time)\n"
    "  --latency=MS           both bridges' latency timer (default 16; 0: a plain UART)\n"
    "  --device-latency=MS    the device's bridge only (receives the requests)\n"
    "  --master-latency=MS    the PC's bridge only (receives the answers)\n"
    "  --device-end=PATH      a symbolic link to the end the daemon opens\n"
    "  --master-end=PATH      a symbolic link to the end vek_master opens\n"
    "  --noise=DIR:AT:N       N bytes going DIR (to-master or to-device) are garbled from\n"
    "                         AT on: milliseconds after the start, or bK for the K-th byte\n"
    "  --drop=DIR:AT:N        N bytes going DIR are lost from AT on\n"
    "  --pull=AT[:FOR]        the cable is pulled at AT (milliseconds after the start, or bK\n"
    "                         once the device has sent K bytes): both ends hang up, and\n"
    "                         come back under their links FOR ms later (default 500)\n";

volatile sig_atomic_t stopRequested = 0;

void onStop(int) { stopRequested = 1; }

bool number(const std::string& text, long min, long max, long& out) {
    if (text.empty()) {
        return false;
    }
    char* end = nullptr;
    errno = 0;
    out = std::strtol(text.c_str(), &end, 10);
    return errno == 0 && *end == '\0' && out >= min && out <= max;
}

// DIR:AT:N
bool fault(const std::string& text, VekCableModel::Fault kind, VekCable::Fault& out) {
    const size_t a = text.find(':');
    const size_t b = a == std::string::npos ? a : text.find(':', a + 1);
    if (b == std::string::npos) {
        return false;
    }
    const std::string dir = text.substr(0, a);
    std::string at = text.substr(a + 1, b - a - 1);
    long count = 0;
    long when = 0;
    out.kind = kind;
    if (dir == "to-master") {
        out.direction = VekCable::ToMaster;
    } else if (dir == "to-device") {
        out.direction = VekCable::ToDevice;
    } else {
        return false;
    }
    const bool byByte = !at.empty() && at[0] == 'b';
    if (byByte) {
        at.erase(0, 1);
    }
    if (!number(at, 0, 1L << 30, when) || !number(text.substr(b + 1), 1, 1 << 20, count)) {
        return false;
    }
    (byByte ? out.atByte : out.atMs) = when;
    out.count = static_cast<size_t>(count);
    return true;
}

bool pull(const std::string& text, VekCable::Pull& out) {
    const size_t colon = text.find(':');
    long at = 0;
    long length = 500;
    const bool byByte = !text.empty() && text[0] == 'b';
    if (!number(text.substr(byByte ? 1 : 0, colon - (byByte ? 1 : 0)), 0, 1L << 30, at) ||
        (colon != std::string::npos && !number(text.substr(colon + 1), 0, 1L << 30, length))) {
        return false;
    }
    (byByte ? out.atByte : out.atMs) = at;
    out.forMs = length;
    return true;
}

int usage(const std::string& arg) {
    std::fprintf(stderr, "vek_cable: bad option %s\n%s", arg.c_str(), kUsage);
    return 64;
}

}  // namespace

int main(int argc, char** argv) {
    VekCable::Options options;
    long baud = 115200;
    long latency[2] = {16, 16};  // the PC's bridge, the device's bridge
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const size_t eq = arg.find('=');
        const std::string name = arg.substr(0, eq);
        const std::string value = eq == std::string::npos ? "" : arg.substr(eq + 1);
        long n = 0;
        VekCable::Fault f;
        VekCable::Pull p;
        if (arg == "--help") {
            std::fputs(kUsage, stdout);
            return 0;
        } else if (name == "--baud" && number(value, 0, 4000000, baud)) {
        } else if (name == "--latency" && number(value, 0, 255, n)) {
            latency[0] = latency[1] = n;
        } else if (name == "--master-latency" && number(value, 0, 255, latency[0])) {
        } else if (name == "--device-latency" && number(value, 0, 255, latency[1])) {
        } else if (name == "--device-end" && !value.empty()) {
            options.deviceLink = value;
        } else if (name == "--master-end" && !value.empty()) {
            options.masterLink = value;
        } else if (name == "--noise" && fault(value, VekCableModel::Fault::Noise, f)) {
            options.faults.push_back(f);
        } else if (name == "--drop" && fault(value, VekCableModel::Fault::Drop, f)) {
            options.faults.push_back(f);
        } else if (name == "--pull" && pull(value, p)) {
            options.pulls.push_back(p);
        } else {
            return usage(arg);
        }
    }
    options.toMaster.baud = options.toDevice.baud = static_cast<int32_t>(baud);
    options.toMaster.latencyMs = static_cast<int>(latency[0]);
    options.toDevice.latencyMs = static_cast<int>(latency[1]);

    struct sigaction action {};
    action.sa_handler = onStop;
    sigemptyset(&action.sa_mask);
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
    signal(SIGPIPE, SIG_IGN);

    VekCable cable(options);
    if (!cable.ok()) {
        std::fprintf(stderr, "vek_cable: %s\n", cable.problem().c_str());
        return 74;
    }
    std::printf("device end: %s\nmaster end: %s\n", cable.deviceEnd().c_str(),
                cable.masterEnd().c_str());
    std::fflush(stdout);
    // The signal may land on the relay's thread: look for it rather than wait for it.
    while (!stopRequested) {
        usleep(50000);
    }
    cable.stop();
    const VekCable::Counters c = cable.counters();
    const char* names[2] = {"to master", "to device"};
    for (int d = 0; d < 2; ++d) {
        std::printf("%s: %llu bytes in %llu packets, %llu garbled, %llu dropped, %llu lost\n",
                    names[d], static_cast<unsigned long long>(c.bytes[d]),
                    static_cast<unsigned long long>(c.packets[d]),
                    static_cast<unsigned long long>(c.noisy[d]),
                    static_cast<unsigned long long>(c.dropped[d]),
                    static_cast<unsigned long long>(c.lost[d]));
    }
    std::printf("pulls: %llu\n", static_cast<unsigned long long>(c.pulls));
    return 0;
}
