#include "SimState.h"

SimState::SimState() : effects{{"equalizer", {}}, {"hfe", {}}, {"vb", {}}} {}
