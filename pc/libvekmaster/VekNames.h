#pragma once

#include <algorithm>
#include <string>
#include <vector>

namespace vekmaster {

// Lists of names (features, settings, channels) as messages and wire texts show them.
class VekNames {
public:
    static bool contains(const std::vector<std::string>& list, const std::string& name) {
        return std::find(list.begin(), list.end(), name) != list.end();
    }
    // "Common Gain Eq"; with ":" the parts of a value as the wire joins them.
    static std::string join(const std::vector<std::string>& list, const char* separator = " ") {
        std::string text;
        for (const std::string& entry : list) {
            text += (text.empty() ? "" : separator) + entry;
        }
        return text;
    }
};

}  // namespace vekmaster
