#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "AudioSim.h"
#include "CapturingTransport.h"
#include "VekFrameHub.h"

// One feature's service wired as the server wires it, fed through a real hub, with
// the simulator reset and standard output captured per request.
template <class Slave, class Impl>
class ServiceTest : public ::testing::Test {
protected:
    void SetUp() override {
        AudioSim::reset();
        hub.registerEndpoint(Slave::kFeature, &endpoint);
        endpoint.setCallback(&impl);
    }
    void TearDown() override { EXPECT_EQ(AudioSim::liveObjects(), 0); }

    // Feeds one request frame; returns what the service printed. The response is the
    // last transport write.
    std::string serve(const std::string& frame) {
        testing::internal::CaptureStdout();
        hub.feed(frame.data(), static_cast<uint32_t>(frame.size()));
        return testing::internal::GetCapturedStdout();
    }
    const std::string& response() const { return transport.writes.back(); }

    CapturingTransport transport;
    Slave endpoint;
    vekprotocol::VekFrameHub hub{&endpoint, nullptr};
    Impl impl{&endpoint, &hub, &transport};
};
