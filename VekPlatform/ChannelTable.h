#pragma once

#include <cstdint>
#include <string>

namespace vekserver {

// The six output channels. Every six-element per-channel array on the wire follows
// this order.
class ChannelTable {
public:
    struct Entry {
        const char* name;
        uint32_t index;
        uint32_t mask;
    };
    static constexpr uint32_t kCount = 6;

    static const Entry& at(uint32_t index) { return kEntries[index]; }
    // Exact, case-sensitive match; an unknown name addresses "LF".
    static uint32_t maskOf(const std::string& name);

private:
    static constexpr Entry kEntries[kCount] = {
        {"LF", 0, 1}, {"RF", 1, 2}, {"LS", 2, 4}, {"RS", 3, 8}, {"CF", 4, 16}, {"L1", 5, 32},
    };
};

inline uint32_t channelMask(const std::string& name) {
    return ChannelTable::maskOf(name);
}

}  // namespace vekserver
