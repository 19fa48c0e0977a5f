#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "AudioSim.h"
#include "VekFrameHub.h"
#include "VekTransport.h"

// A transport that keeps what is written, one entry per write call.
class CapturingTransport : public vektransport::VekTransport {
public:
    int32_t open() override { return 0; }
    int32_t close() override { return 0; }
    int32_t read(char*, uint32_t) override { return 0; }
    int32_t write(const char* buffer, uint32_t length) override {
        writes.emplace_back(buffer, length);
        return static_cast<int32_t>(length);
    }
    bool isDisconnected() override { return false; }

    std::vector<std::string> writes;
};

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
