#include "VekAccessGuard.h"

#include <arpa/inet.h>

#include <cctype>

#include "VekHostPort.h"

namespace vekserve {

namespace {

// A comparison that takes as long whatever the first difference, so a token cannot be
// guessed byte by byte from the time an answer takes.
bool sameSecret(const std::string& a, const std::string& b) {
    unsigned char differ = a.size() == b.size() ? 0 : 1;
    for (size_t i = 0; i < a.size(); ++i) {
        differ |= static_cast<unsigned char>(a[i] ^ b[i % (b.empty() ? 1 : b.size())]);
    }
    return differ == 0 && !b.empty();
}

}  // namespace

bool VekAccessGuard::ours(const std::string& authority) const {
    vekhttp::VekHostPort parts;
    if (!vekhttp::VekHostPort::split(authority, parts)) {
        return false;
    }
    std::string name = parts.host;
    const std::string& port = parts.port;
    for (char& c : name) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    if ((port.empty() ? std::string("80") : port) != std::to_string(port_)) {
        return false;
    }
    in_addr v4{};
    const bool loopback = name == "localhost" || name == "::1" ||
                          (inet_pton(AF_INET, name.c_str(), &v4) == 1 &&
                           (ntohl(v4.s_addr) >> 24) == 127);
    const bool wildcard = config_.host == "0.0.0.0" || config_.host == "::";
    return loopback || name == config_.host || (wildcard && vekhttp::VekHostPort::ipAddress(name));
}

int VekAccessGuard::check(const VekHttpRequest& request, std::string& why, bool needToken) const {
    if (!ours(request.host)) {
        why = "Host '" + request.host + "' does not name this server";
        return 403;
    }
    static const std::string kHttp = "http://";
    if (!request.origin.empty() &&
        (request.origin.compare(0, kHttp.size(), kHttp) != 0 ||
         !ours(request.origin.substr(kHttp.size())))) {
        why = "requests from the page at " + request.origin + " are not accepted";
        return 403;
    }
    if (config_.token.empty() || !needToken) {
        return 0;
    }
    static const std::string kBearer = "Bearer ";
    const std::string given = request.authorization.compare(0, kBearer.size(), kBearer) == 0
                                  ? request.authorization.substr(kBearer.size())
                                  : request.param("access_token");
    if (!sameSecret(given, config_.token)) {
        why = given.empty() ? "this server needs a token: Authorization: Bearer TOKEN"
                            : "the token is not this server's";
        return 401;
    }
    return 0;
}

}  // namespace vekserve
