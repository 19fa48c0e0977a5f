#pragma once

#include "VekMasterReply.h"

namespace vekmaster {

// What vek_master's exit status tells a script. 64 and 74 follow the usual meaning of
// bad usage and a local input/output failure; 69 says the launched daemon misbehaved.
// Ordered so that, of several devices' statuses, the largest is the worst.
struct VekExitStatus {
    static constexpr int kOk = 0;
    static constexpr int kNg = 1;  // answered NG, values missing or differing
    static constexpr int kNoAnswer = 2;
    static constexpr int kUsage = 64;
    static constexpr int kDaemon = 69;
    static constexpr int kIo = 74;

    static int of(const VekMasterReply& reply) {
        switch (reply.outcome) {
            case VekMasterReply::Outcome::Ok:
                return kOk;
            case VekMasterReply::Outcome::Ng:
                return kNg;
            case VekMasterReply::Outcome::Refused:
                return kUsage;
            case VekMasterReply::Outcome::NoAnswer:
                return kNoAnswer;
            case VekMasterReply::Outcome::LineFailed:
            case VekMasterReply::Outcome::RawFailed:
                break;
        }
        return kIo;
    }
};

}  // namespace vekmaster
