#pragma once

#include <gtest/gtest.h>

#include "AudioSim.h"

// Every test starts from the simulator's defaults and must give back what it made.
class SimTest : public ::testing::Test {
protected:
    void SetUp() override { AudioSim::reset(); }
    void TearDown() override { EXPECT_EQ(AudioSim::liveObjects(), 0) << "a test leaked objects"; }
};
