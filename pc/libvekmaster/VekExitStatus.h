#pragma once

#include "VekMasterReply.h"

namespace vekmaster {

// What vek_master's exit status tells a script. 64, 65 and 74 follow the usual meaning of
// bad usage, bad input data and a local input/output failure; 69 says the launched daemon misbehaved.
// Ordered so that, of several devices' statuses, the largest is the worst.
struct VekExitStatus {
    static constexpr int kOk = 0;
    static constexpr int kNg = 1;  // answered NG, values missing or differing
    static constexpr int kNoAnswer = 2;
    static constexpr int kUsage = 64;
    static constexpr int kData = 65;  // a filter file that cannot be read or does not fit
    static constexpr int kDaemon = 69;
    static constexpr int kIo = 74;

    // The status of each kind of error; kOk for none.
    static int of(VekError::Kind kind) {
        switch (kind) {
            case VekError::Kind::None:
                return kOk;
            case VekError::Kind::Usage:
            case VekError::Kind::Range:
            case VekError::Kind::NotFound:
                return kUsage;
            case VekError::Kind::NoAnswer:
                return kNoAnswer;
            case VekError::Kind::Busy:
            case VekError::Kind::LineFailed:
            case VekError::Kind::RawFailed:
            case VekError::Kind::BadAnswer:
                break;
        }
        return kIo;
    }
    static int of(const VekMasterReply& reply) {
        return reply.outcome == VekMasterReply::Outcome::Ng ? kNg : of(reply.error().kind);
    }
};

}  // namespace vekmaster
