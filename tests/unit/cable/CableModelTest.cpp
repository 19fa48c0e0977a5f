#include <gtest/gtest.h>

#include <string>

#include "VekCableModel.h"

using vekcable::VekCableModel;

namespace {

constexpr int64_t kMs = 1000000;

VekCableModel model(int32_t baud, int latencyMs) {
    VekCableModel::Settings settings;
    settings.baud = baud;
    settings.latencyMs = latencyMs;
    return VekCableModel(settings);
}

}  // namespace

// A short frame waits for the bridge's timer; a long stream goes in full packets, each
// when its 62nd byte is off the wire (ten bits a byte).
TEST(CableModel, BridgeHandsOverFullPacketsOrWhenItsTimerRunsOut) {
    VekCableModel m = model(100000, 16);  // 100 us a byte
    const std::string frame = "AS:1:0:Gain:GetMasterRequest:0:OK:\n";
    m.push(0, frame.data(), frame.size());
    EXPECT_EQ(m.next(), 100000 + 16 * kMs);  // first byte off the wire at 0.1 ms
    std::string out;
    m.take(16 * kMs, out);
    EXPECT_EQ(out, "");
    m.take(m.next(), out);
    EXPECT_EQ(out, frame);
    EXPECT_EQ(m.next(), -1);

    const std::string stream(130, 'x');
    m.push(20 * kMs, stream.data(), stream.size());
    EXPECT_EQ(m.next(), 20 * kMs + 62 * 100000);
    out.clear();
    m.take(20 * kMs + 124 * 100000, out);
    EXPECT_EQ(out.size(), 124u);  // two full packets
    EXPECT_EQ(m.next(), 20 * kMs + 125 * 100000 + 16 * kMs);  // the last six wait
    m.take(m.next(), out);
    EXPECT_EQ(out, stream);
    EXPECT_EQ(m.packets(), 4u);
}

// Without a timer each byte is there once it is off the wire; at baud 0 at once.
TEST(CableModel, PlainUartAndNoWireTime) {
    VekCableModel uart = model(10000, 0);  // 1 ms a byte
    uart.push(5 * kMs, "abc", 3);
    std::string out;
    uart.take(7 * kMs, out);
    EXPECT_EQ(out, "ab");
    // Written while the wire is busy: queued behind.
    uart.push(7 * kMs, "d", 1);
    uart.take(9 * kMs, out);
    EXPECT_EQ(out, "abcd");

    VekCableModel pty = model(0, 0);
    pty.push(3, "xyz", 3);
    out.clear();
    pty.take(3, out);
    EXPECT_EQ(out, "xyz");
}

// Noise replaces exactly the bytes it hits; a drop loses them and its wire time passes.
TEST(CableModel, FaultsHitTheBytesFromTheirPlaceOn) {
    VekCableModel m = model(10000, 0);
    m.faultAt(2, VekCableModel::Fault::Noise, 2);
    m.faultAt(6, VekCableModel::Fault::Drop, 1);
    m.push(0, "0123456789", 10);
    std::string out;
    m.take(100 * kMs, out);
    ASSERT_EQ(out.size(), 9u);
    EXPECT_EQ(out.substr(0, 2), "01");
    EXPECT_NE(out[2], '2');
    EXPECT_NE(out[3], '3');
    EXPECT_EQ(out.substr(4), "45789");
    EXPECT_EQ(m.noisy(), 2u);
    EXPECT_EQ(m.dropped(), 1u);

    // By time: bytes still on the wire at 3.5 ms are the first hit (1 ms a byte).
    VekCableModel t = model(10000, 0);
    t.push(0, "abcdef", 6);
    t.fault(3500000, VekCableModel::Fault::Drop, 2);
    out.clear();
    t.take(100 * kMs, out);
    EXPECT_EQ(out, "abcf");
}
