#pragma once

#include <cstdio>
#include <string>

namespace vekmaster {

// What went wrong, for the user: one line on standard error.
inline void complain(const std::string& text) {
    std::fprintf(stderr, "vek_master: %s\n", text.c_str());
}

}  // namespace vekmaster
