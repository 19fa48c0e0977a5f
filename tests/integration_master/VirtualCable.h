#pragma once

#include <atomic>
#include <string>
#include <thread>

// Two pseudo-terminals joined back to back, as a USB-UART cable joins a PC and a
// device: what is written at one end is read at the other. Both ends have paths, so a
// daemon and vek_master each open theirs by name, as they would a serial port. Both
// slave ends stay open here as well, so a program that closes its end does not hang
// the cable up.
class VirtualCable {
public:
    VirtualCable();
    ~VirtualCable();
    VirtualCable(const VirtualCable&) = delete;
    VirtualCable& operator=(const VirtualCable&) = delete;

    bool ok() const { return ok_; }
    const std::string& deviceEnd() const { return ends_[0]; }
    const std::string& masterEnd() const { return ends_[1]; }
    // Waits until the device end has sent its greeting; true when it has.
    bool awaitGreeting(int timeoutMs) const;

private:
    void relay();

    int masters_[2] = {-1, -1};
    int slaves_[2] = {-1, -1};
    std::string ends_[2];
    bool ok_ = false;
    std::atomic<bool> running_{true};
    std::atomic<bool> greeted_{false};
    std::thread thread_;
};
