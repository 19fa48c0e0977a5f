#pragma once

#include "VekCable.h"

// Two pseudo-terminals joined back to back with no wire time, as a pseudo-terminal
// test wants them: the cable emulator with its pacing off.
class VirtualCable : public vekcable::VekCable {
public:
    VirtualCable() : VekCable(plain()) {}

    static Options plain() {
        Options options;
        options.toMaster.baud = options.toDevice.baud = 0;
        options.toMaster.latencyMs = options.toDevice.latencyMs = 0;
        return options;
    }
};
