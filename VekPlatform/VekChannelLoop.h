#pragma once

#include <cstdint>

#include "ChannelTable.h"
#include "VekLibrary.h"

namespace vekserver {

// Per-channel library calls (channel gains, speaker delays) go through the six
// channels in table order and stop at the first failure: later channels are not
// asked and what was already set stays set.
class VekChannelLoop {
public:
    using Values = float[ChannelTable::kCount];

    // One Object for all six reads; values change only when every read succeeded,
    // so a failed read leaves them all as they were. Gives the last call's status.
    template <class Object>
    static int32_t readEach(int32_t (Object::*get)(uint32_t, float*), Values& values) {
        float read[ChannelTable::kCount] = {};
        const int32_t status = VekLibrary::with<Object>([&](Object& object) {
            return untilFailure(
                [&](uint32_t i, uint32_t mask) { return (object.*get)(mask, &read[i]); });
        });
        if (status == 0) {
            for (uint32_t i = 0; i < ChannelTable::kCount; ++i) {
                values[i] = read[i];
            }
        }
        return status;
    }

    template <class Object>
    static int32_t writeEach(int32_t (Object::*set)(uint32_t, float), const Values& values) {
        return VekLibrary::with<Object>([&](Object& object) {
            return untilFailure(
                [&](uint32_t i, uint32_t mask) { return (object.*set)(mask, values[i]); });
        });
    }

private:
    template <class Call>
    static int32_t untilFailure(Call&& call) {
        int32_t status = 0;
        for (uint32_t i = 0; i < ChannelTable::kCount && status == 0; ++i) {
            status = call(i, ChannelTable::at(i).mask);
        }
        return status;
    }
};

}  // namespace vekserver
