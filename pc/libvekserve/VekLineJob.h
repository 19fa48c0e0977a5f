#pragma once

#include <functional>
#include <string>

#include "VekMasterSession.h"
#include "VekSessionAccess.h"

namespace vekserve {

// One client's errand on a line: a message, a snapshot, an apply. It runs on the line's
// thread with the line's session to itself, and answers its client from there.
struct VekLineJob {
    std::string client;     // who asked: "127.0.0.1:41236"
    std::string requestId;  // the HTTP request it answers, named in its events
    std::function<void(vekmaster::VekMasterSession& session, vekmaster::VekSessionAccess& access)>
        run;
    // The job will not run (the line was lost or the server stops): answer 503 with why.
    std::function<void(const std::string& why)> refuse;
    // Or a single message whose client needs nothing but its reply: the line keeps it on
    // the line in one window with other clients' such messages, and answer gets the
    // reply (run is not used). Checked where it was made, it is not checked again.
    vekmaster::VekCheckedRequest request;
    std::function<void(const vekmaster::VekMasterReply& reply)> answer;
};

}  // namespace vekserve
