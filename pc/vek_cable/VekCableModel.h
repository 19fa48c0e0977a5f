#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

namespace vekcable {

// One direction of a USB-to-UART cable: the sending host's bytes go onto a UART wire at
// the baud rate (8N1, ten bits a byte), and the receiving end's bridge gathers them into
// USB packets of up to 62 bytes, handing a packet to its host when it is full or when
// its latency timer, started by the packet's first byte, runs out. A timer of 0 is a
// plain UART: each byte is there as soon as it is off the wire. Baud 0 means no wire
// time at all (a pseudo-terminal).
//
// Pure arithmetic on a clock the caller gives (nanoseconds), so the relay and the tests
// share it. Faults act on the bytes not yet off the wire: noise replaces them with other
// values, a drop loses them (their wire time passes all the same).
class VekCableModel {
public:
    struct Settings {
        int32_t baud = 0;
        int latencyMs = 16;
        size_t packet = 62;
    };
    enum class Fault { Noise, Drop };
    static constexpr int64_t kNsPerMs = 1000000;

    explicit VekCableModel(const Settings& settings) : settings_(settings) {}

    const Settings& settings() const { return settings_; }
    // The sending host wrote these bytes at now: they follow what is on the wire.
    void push(int64_t now, const char* data, size_t size);
    // What the receiving host has been handed by now, appended to out.
    void take(int64_t now, std::string& out);
    // When take next hands something over, or -1 when nothing is under way.
    int64_t next() const;
    // The next count bytes to leave the wire from now on (those under way first, then
    // those still to be written) are hit by the fault.
    void fault(int64_t now, Fault kind, size_t count);
    // The same from the byte'th byte of the stream (counted from 0) on.
    void faultAt(uint64_t byte, Fault kind, size_t count);
    // The cable is pulled: what is under way is lost.
    void clear();

    // Bytes written and not handed over yet.
    size_t underway() const { return wire_.size(); }
    uint64_t bytesIn() const { return bytesIn_; }
    uint64_t bytesOut() const { return bytesOut_; }
    uint64_t packets() const { return packets_; }
    uint64_t noisy() const { return noisy_; }
    uint64_t dropped() const { return dropped_; }

private:
    struct Byte {
        int64_t arrives;  // off the wire, in the bridge
        uint64_t index;   // its place in the stream
        char value;
    };
    struct Pending {
        uint64_t from;
        Fault kind;
        size_t count;
    };

    // When the bridge hands over the packet that begins with the oldest byte.
    int64_t due() const;
    // Applies the pending faults to a byte; false when it is dropped.
    bool hit(Byte& byte);

    Settings settings_;
    std::deque<Byte> wire_;
    std::deque<Pending> faults_;
    int64_t wireFree_ = 0;  // when the wire has sent all it was given
    uint64_t bytesIn_ = 0;
    uint64_t bytesOut_ = 0;
    uint64_t packets_ = 0;
    uint64_t noisy_ = 0;
    uint64_t dropped_ = 0;
    uint32_t noise_ = 0x2545F491u;  // the noise generator's state: the same run each time
};

}  // namespace vekcable
