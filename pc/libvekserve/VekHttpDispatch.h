#pragma once

#include <memory>
#include <string>

#include "VekHttpExchange.h"
#include "VekHttpRequest.h"

namespace vekserve {

class VekHttpServer;

// What a request read whole gets, apart from the connection that read it: its id,
// the access check, then its route, a file of the panel, or a refusal. An upgrade to
// the events' WebSocket is left to the connection, which owns the socket.
class VekHttpDispatch {
public:
    // The WebSocket a client may upgrade to.
    static constexpr const char* kEventsPath = "/api/events";

    explicit VekHttpDispatch(VekHttpServer& server) : server_(server) {}

    enum class Verdict {
        Handled,  // answered, or handed to a route that answers
        Upgrade,  // an allowed upgrade to kEventsPath: the connection hands its socket on
    };
    // request's id is filled in when the client gave none.
    Verdict dispatch(VekHttpRequest& request, const std::shared_ptr<VekHttpExchange>& exchange);

private:
    VekHttpServer& server_;
};

}  // namespace vekserve
