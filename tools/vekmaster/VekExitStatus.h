#pragma once

namespace vekmaster {

// What vek_master's exit status tells a script. 64 and 74 follow the usual meaning of
// bad usage and a local input/output failure; 69 says the launched daemon misbehaved.
struct VekExitStatus {
    static constexpr int kOk = 0;
    static constexpr int kNg = 1;
    static constexpr int kNoAnswer = 2;
    static constexpr int kUsage = 64;
    static constexpr int kDaemon = 69;
    static constexpr int kIo = 74;
};

}  // namespace vekmaster
