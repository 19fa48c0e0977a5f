#pragma once

#include <deque>

#include "VekCheckedRequest.h"
#include "VekMasterMessage.h"
#include "VekMasterReply.h"
#include "VekSerDes.h"

namespace vekmaster {

// One request of a batch that a session keeps several of on the line at once, and
// what became of it.
struct VekMasterExchange {
    const VekMasterMessage* message = nullptr;
    vekprotocol::VekFields args;
    bool sent = false;
    VekMasterReply reply;
    size_t tag = 0;  // the caller's, to find what the request was for
    bool checked = false;  // made from a checked request: the session sends it as it is

    VekMasterExchange() = default;
    explicit VekMasterExchange(const VekCheckedRequest& request)
        : message(&request.message()), args(request.args()), checked(true) {}

    using Batch = std::deque<VekMasterExchange>;
};

}  // namespace vekmaster
