#pragma once

#include <cstdint>
#include <string>

#include "VekTrace.h"

namespace vekmaster {

// Turns a daemon's log into a trace: each receive dump ("+RECV-frame-RECV") becomes a
// packet from the master, each send dump ("+SEND-frame-SEND") one to it, in the log's
// order, on the line its Args line names (device=PATH; "log" before any). The daemon's
// own lines carry no time; a journal's do ("2026-11-25T10:31:58.123456+0000 host
// vek_tuner[42]: ...", from journalctl -o short-iso-precise, or -o short-iso), and a
// frame then takes the time of its dump's first line; otherwise its time is 0 (order
// only). A dump cut short (a frame with a zero byte, or longer than the daemon's
// 20479-character log buffer) gives the bytes it shows, marked stray.
class VekTraceLog {
public:
    // Appends the log's frames to trace; returns how many dumps it found.
    static size_t read(const std::string& log, VekTrace& trace);
    // One line of the log: its text without a journal's prefix, and the prefix's time
    // in microseconds since the epoch (0 when there is none).
    static std::string strip(const std::string& line, int64_t& timeUs);
};

}  // namespace vekmaster
