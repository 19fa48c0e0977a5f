#pragma once

#include <cstdint>
#include <string>

#include "VekHttpRequest.h"
#include "VekServeConfig.h"

namespace vekserve {

// Who may use the server. A request must name this server in its Host header (a
// loopback name, the listen address, or with a wildcard listen address any IP address),
// so that a web page elsewhere cannot reach it through a name that resolves to us; a
// request from a browser must come from the server's own pages (its Origin, when it
// has one, passes the same test); and with a token, every request must bring it (but
// those for the panel's own files, which hold nothing of a device).
class VekAccessGuard {
public:
    VekAccessGuard(const VekServeConfig& config, uint16_t port) : config_(config), port_(port) {}

    // 0 when the request may pass; else 401 or 403, with why. Without needToken, the
    // token is not asked for.
    int check(const VekHttpRequest& request, std::string& why, bool needToken = true) const;
    // "host[:port]" names this server.
    bool ours(const std::string& authority) const;

private:
    const VekServeConfig& config_;
    uint16_t port_;
};

}  // namespace vekserve
