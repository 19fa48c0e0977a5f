#pragma once

#include <string>

namespace vekhttp {

// A network authority as a URL, a Host header and --listen write it: "HOST:PORT",
// "[V6]:PORT", or a host alone.
struct VekHostPort {
    std::string host;  // without the brackets of an IPv6 address
    std::string port;  // "" when none is given
    bool bracketed = false;

    // False when a bracket does not close or anything but ":PORT" follows it. Without
    // brackets the last ':' begins the port, so "::1:8741" is the IPv6 loopback's.
    static bool split(const std::string& text, VekHostPort& out);
    // An IPv4 or IPv6 address, not a name.
    static bool ipAddress(const std::string& name);
};

}  // namespace vekhttp
