#include "VekServeConfig.h"

#include <arpa/inet.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "VekHostPort.h"
#include "VekTokenFile.h"

namespace vekserve {

std::string VekServeConfig::listen(const std::string& text) {
    vekhttp::VekHostPort parts;
    if (!vekhttp::VekHostPort::split(text, parts) || parts.host.empty() || parts.port.empty()) {
        return "--listen=" + text + " is not HOST:PORT";
    }
    const std::string& name = parts.host;
    if (name != "localhost" && !vekhttp::VekHostPort::ipAddress(name)) {
        return "--listen=" + text + ": " + name + " is not an IP address or localhost";
    }
    const std::string& digits = parts.port;
    char* end = nullptr;
    errno = 0;
    const long number = std::strtol(digits.c_str(), &end, 10);
    if (end == digits.c_str() || *end != '\0' || errno != 0 || number < 0 || number > 65535) {
        return "--listen=" + text + ": " + digits + " is not a port (0 to 65535)";
    }
    host = name;
    port = static_cast<uint16_t>(number);
    return "";
}

bool VekServeConfig::loopback() const {
    in_addr v4{};
    if (inet_pton(AF_INET, host.c_str(), &v4) == 1) {
        return (ntohl(v4.s_addr) >> 24) == 127;
    }
    in6_addr v6{};
    if (inet_pton(AF_INET6, host.c_str(), &v6) == 1) {
        return IN6_IS_ADDR_LOOPBACK(&v6);
    }
    return host == "localhost";
}

std::string VekServeConfig::readToken(const std::string& path) {
    return vekhttp::VekTokenFile::read(path, token);
}

}  // namespace vekserve
