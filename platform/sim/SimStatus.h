#pragma once

#include <cstdint>

// Statuses the simulator gives by itself.
struct SimStatus {
    static constexpr int32_t kOk = 0;
    static constexpr int32_t kNoSuchEffect = -2;
    static constexpr int32_t kInvalid = -22;
};
