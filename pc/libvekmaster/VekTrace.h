#pragma once

#include <string>
#include <vector>

#include "VekTracePacket.h"

namespace vekmaster {

// A capture: the lines it saw (their paths) and every packet in the order taken.
struct VekTrace {
    std::vector<std::string> lines;
    std::vector<VekTracePacket> packets;

    // The index of the line with that path, added when new.
    uint32_t lineFor(const std::string& path) {
        for (size_t i = 0; i < lines.size(); ++i) {
            if (lines[i] == path) {
                return static_cast<uint32_t>(i);
            }
        }
        lines.push_back(path);
        return static_cast<uint32_t>(lines.size() - 1);
    }
};

}  // namespace vekmaster
