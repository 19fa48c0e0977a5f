#pragma once

#include <termios.h>

#include <atomic>
#include <cstdint>
#include <string>

#include "VekTransport.h"

namespace vektransport {

// The serial line to the master: a tty in raw 8N1 mode whose reads give up after one
// second, so that the reading thread can notice a stop request.
class VekTransportUsb : public VekTransport {
public:
    VekTransportUsb(const std::string& device, int32_t baudRate);
    // Leaves the descriptor alone: its owner closes it first.
    ~VekTransportUsb() override = default;
    VekTransportUsb(const VekTransportUsb&) = delete;
    VekTransportUsb& operator=(const VekTransportUsb&) = delete;

    int32_t open() override;
    int32_t close() override;
    int32_t read(char* buffer, uint32_t length) override;
    int32_t write(const char* buffer, uint32_t length) override;
    bool isDisconnected() override;

    // The line speed for a rate; rates the line does not offer run at 115200.
    static speed_t speedFor(int32_t baudRate);

private:
    class Use;
    int32_t closeParked();
    // Reports a failed attribute call ("get" or "set") and gives the descriptor up.
    int32_t abandon(const char* what, int result);
    // Reports a failed transfer ("read" or "write") when result is negative.
    static void reportTransfer(const char* what, int32_t result);

    std::string device_;
    int32_t baudRate_;
    std::atomic<int32_t> fd_{-1};
    std::atomic<int32_t> users_{0};    // calls in flight on the descriptor
    std::atomic<int32_t> parked_{-1};  // closed while in use; the last call closes it
};

}  // namespace vektransport
