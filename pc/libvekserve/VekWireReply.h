#pragma once

#include "VekMasterReply.h"
#include "VekReplyJson.h"

namespace vekserve {

// An answer as the API gives it: the object `vek_master --json` prints, and "frame",
// the answer's header line as it came off the line. A client decodes the frame with
// its own message catalogue and so holds the very reply the server had.
struct VekWireReply {
    static vekmaster::VekValueJson::Json of(const vekmaster::VekMasterReply& reply) {
        vekmaster::VekValueJson::Json out = vekmaster::VekReplyJson::of(reply);
        out["frame"] = reply.frame;
        return out;
    }
};

}  // namespace vekserve
