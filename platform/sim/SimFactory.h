#pragma once

#include "SimState.h"

// The device a process finds when it starts: tuned as a plausible product would leave
// the factory, so that a snapshot of a simulated device shows real values. Tests that
// reset the simulator start from the blank defaults instead.
//
//   master gain -12; channel gains LF 0, RF -0.5, LS -2, RS -2.5, CF -1, L1 -4;
//   speaker delays LS and RS 1.5, CF 0.5, others 0;
//   equaliser band counts 10 per channel, L1 (the low-frequency channel) 5;
//   bands 0 to 19 of every channel: value1 2, value2 a centre frequency (bands 0 to 9
//   the octaves 31 to 16000, bands 10 to 19 the half-octaves between them), value3 0,
//   value4 0.707, value5 0, value6 1.
class SimFactory {
public:
    static void apply(SimState& state);
};
