#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "VekMessageCatalog.h"
#include "VekMasterReply.h"
#include "VekSerialLine.h"
#include "VekTrace.h"

namespace vekmaster {

// Sends a trace's master frames to a device again, in their order, and compares each
// answer with the recorded one: feature, message, status, raw data length and bytes, and
// every payload field by name. The numbers in the headers (self, peer), the times and
// the line's path are not compared, nor are stray bytes. A request's recorded answer is
// the first frame after it, from the device, with its feature and response name; a
// request the recording shows unanswered must stay unanswered for kSilenceMs.
class VekTraceReplay {
public:
    static constexpr int kSilenceMs = 300;

    struct Options {
        bool originalTiming = false;  // keep the recorded gaps between requests
        int timeoutMs = 3000;         // for each answer
    };
    struct Result {
        size_t requests = 0;
        std::vector<std::string> differences;
        std::string failure;  // the line failed: the replay stopped
    };

    // Replays the frames of the trace's line `line` on the open line.
    Result run(const VekTrace& trace, uint32_t line, VekSerialLine& on, const Options& options);
    // What differs between a recorded answer and the one that came; "" when none.
    std::vector<std::string> compare(const std::string& recorded, const std::string& now) const;

private:
    const VekMessageCatalog& catalog_ = VekMessageCatalog::shared();
};

}  // namespace vekmaster
