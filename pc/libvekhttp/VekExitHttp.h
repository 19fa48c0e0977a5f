#pragma once

#include "VekExitStatus.h"

namespace vekhttp {

// vek_master's exit statuses and the HTTP statuses that say the same: an answer, NG or
// not, is 200 (its body says which); no answer in time 504; bad usage or a bad document
// 400; a line that failed, is disconnected or too busy 503.
struct VekExitHttp {
    // The HTTP status of each kind of error; 200 for none.
    static int status(vekmaster::VekError::Kind kind) {
        using Kind = vekmaster::VekError::Kind;
        switch (kind) {
            case Kind::None:
                return 200;
            case Kind::Usage:
            case Kind::Range:
                return 400;
            case Kind::NotFound:
                return 404;
            case Kind::NoAnswer:
                return 504;
            case Kind::RawFailed:
            case Kind::BadAnswer:
                return 502;
            case Kind::Busy:
            case Kind::LineFailed:
                break;
        }
        return 503;
    }
    static int status(int exit) {
        switch (exit) {
            case vekmaster::VekExitStatus::kOk:
            case vekmaster::VekExitStatus::kNg:
                return 200;
            case vekmaster::VekExitStatus::kNoAnswer:
                return 504;
            case vekmaster::VekExitStatus::kUsage:
                return 400;
            default:
                return 503;
        }
    }
    // The exit status of a refusal (any status but 200).
    static int exit(int status) {
        if (status == 504) {
            return vekmaster::VekExitStatus::kNoAnswer;
        }
        return status >= 400 && status < 500 ? vekmaster::VekExitStatus::kUsage
                                             : vekmaster::VekExitStatus::kIo;
    }
};

}  // namespace vekhttp
