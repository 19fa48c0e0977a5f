#pragma once

#include <sys/types.h>
#include <termios.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "VekTraceSink.h"
#include "VekTraceSplitter.h"

namespace vekmaster {

// The master's end of the serial line. It is kept non-blocking and every wait is a
// poll with a limit, so neither a silent device nor a full line can hang the tool.
class VekSerialLine {
public:
    VekSerialLine() = default;
    ~VekSerialLine();
    VekSerialLine(const VekSerialLine&) = delete;
    VekSerialLine& operator=(const VekSerialLine&) = delete;

    // Opens a tty raw 8N1 at the rate, as the daemon opens its end; "" or the reason.
    std::string open(const std::string& device, int32_t baudRate);
    // After open: "" or why the kernel would not hand received bytes over at once
    // (ASYNC_LOW_LATENCY) on a serial port that has the setting; a pseudo-terminal has no
    // such setting and gives "".
    const std::string& latencyNote() const { return latencyNote_; }
    // Uses a descriptor someone else owns and has configured (a pseudo-terminal).
    void adopt(int fd);

    // Waits up to timeoutMs: the number of bytes read, 0 when none came, -1 when the
    // line failed (errno tells why).
    ssize_t receive(char* buffer, size_t size, int timeoutMs);
    // Writes every byte within timeoutMs; false when the line failed or stayed full.
    bool send(const std::string& bytes, int timeoutMs);

    // From now on every frame each way, and every stray byte, goes to the sinks as a
    // packet under path (the line's name in a trace).
    void trace(std::vector<VekTraceSink*> sinks, std::string path);
    // Bytes someone else read off this line (the launcher, up to the greeting).
    void noteReceived(const std::string& bytes);

private:
    void askLowLatency(const std::string& device);
    void tap(VekTraceSplitter& splitter, bool outbound, const char* data, size_t size);
    void handOn(std::vector<VekTracePacket>& packets, bool outbound);

    int fd_ = -1;
    bool owned_ = false;
    std::string latencyNote_;
    std::vector<VekTraceSink*> sinks_;
    std::string tracePath_;
    VekTraceSplitter received_;
    VekTraceSplitter sent_;
};

}  // namespace vekmaster
