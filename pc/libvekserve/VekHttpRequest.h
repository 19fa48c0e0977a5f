#pragma once

#include <map>
#include <string>

namespace vekserve {

// An HTTP request as the routes see it, apart from the library that read it.
struct VekHttpRequest {
    // A client's name for its request, repeated in the answer and the events it causes.
    static constexpr const char* kIdHeader = "Vek-Request-Id";

    std::string method;  // "GET"
    std::string target;  // as sent: "/api/devices/0/apply?dry_run=1"
    std::string path;    // the target up to '?'
    std::map<std::string, std::string> query;  // decoded
    std::string body;
    std::string client;  // the peer: "127.0.0.1:41236"
    std::string host;    // the Host header
    std::string origin;  // the Origin header, "" when none
    std::string authorization;
    bool upgrade = false;  // a WebSocket upgrade
    std::string id;        // names the request in the events it causes

    // The query parameter, or "" when absent.
    std::string param(const std::string& name) const {
        const auto found = query.find(name);
        return found != query.end() ? found->second : "";
    }
    // A yes/no query parameter: "1", "true" or "yes" (or present without a value).
    bool flag(const std::string& name) const {
        const auto found = query.find(name);
        return found != query.end() &&
               (found->second.empty() || found->second == "1" || found->second == "true" ||
                found->second == "yes");
    }
    // Splits target into path and query.
    void splitTarget();
    // A request id a client may give: "" (the server names it), or 1 to 64 of
    // A-Z a-z 0-9 . _ : -, so that it goes into a header and an event as it is.
    static bool validId(const std::string& id);
};

}  // namespace vekserve
