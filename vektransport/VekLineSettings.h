#pragma once

#include <termios.h>

#include <cstdint>
#include <string>

namespace vektransport {

// What both ends of the serial line agree on: the rates it runs at and the raw 8N1
// settings. The daemon and the master client configure their ends with this.
class VekLineSettings {
public:
    // The speed constant of a rate in the table (110 to 921600); false for any other.
    static bool speedFor(int32_t baudRate, speed_t& speed);
    // The rates of the table, ascending, separated by spaces.
    static std::string rates();
    // 8N1 at speed, no flow control, modem lines ignored, raw bytes both ways; a read
    // returns what is there, or nothing after one second.
    static void makeRaw(termios& tio, speed_t speed);
};

}  // namespace vektransport
