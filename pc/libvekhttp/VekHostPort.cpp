#include "VekHostPort.h"

#include <arpa/inet.h>

namespace vekhttp {

bool VekHostPort::split(const std::string& text, VekHostPort& out) {
    out = VekHostPort();
    std::string rest;
    if (!text.empty() && text[0] == '[') {
        const size_t close = text.find(']');
        if (close == std::string::npos) {
            return false;
        }
        out.host = text.substr(1, close - 1);
        out.bracketed = true;
        rest = text.substr(close + 1);
        if (!rest.empty() && rest[0] != ':') {
            return false;
        }
    } else {
        const size_t colon = text.rfind(':');
        out.host = text.substr(0, colon);
        rest = colon == std::string::npos ? "" : text.substr(colon);
    }
    out.port = rest.empty() ? "" : rest.substr(1);
    return true;
}

bool VekHostPort::ipAddress(const std::string& name) {
    unsigned char address[sizeof(in6_addr)];
    return inet_pton(AF_INET, name.c_str(), address) == 1 ||
           inet_pton(AF_INET6, name.c_str(), address) == 1;
}

}  // namespace vekhttp
