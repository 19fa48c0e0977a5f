#pragma once

#include <cstring>

namespace vekprotocol {

// Command-line options of the form --name=value, as both ends' programs read them.
class VekOption {
public:
    // The value behind prefix when arg starts with it ("" when nothing follows), else null.
    static const char* valueAfter(const char* arg, const char* prefix) {
        const size_t n = std::strlen(prefix);
        return std::strncmp(arg, prefix, n) == 0 ? arg + n : nullptr;
    }
};

}  // namespace vekprotocol
