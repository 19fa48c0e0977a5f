#include "VekSerialLine.h"

#include <fcntl.h>
#include <linux/serial.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

#include "VekLineSettings.h"

namespace vekmaster {

namespace {

int64_t nowUs() {
    return std::chrono::duration_cast<std::chrono::microseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

std::string reason(const char* what, const std::string& device) {
    const int err = errno;
    return std::string("cannot ") + what + ' ' + device + ": " + std::strerror(err);
}

}  // namespace

VekSerialLine::~VekSerialLine() {
    if (!sinks_.empty()) {
        std::vector<VekTracePacket> rest;
        received_.flush(nowUs(), rest);
        handOn(rest, false);
        sent_.flush(nowUs(), rest);
        handOn(rest, true);
    }
    if (owned_ && fd_ >= 0) {
        ::close(fd_);
    }
}

std::string VekSerialLine::open(const std::string& device, int32_t baudRate) {
    speed_t speed = B115200;
    vektransport::VekLineSettings::speedFor(baudRate, speed);
    // O_NONBLOCK also keeps the open itself from waiting for a carrier.
    fd_ = ::open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd_ < 0) {
        return reason("open", device);
    }
    owned_ = true;
    termios tio{};
    if (tcgetattr(fd_, &tio) != 0) {
        return reason("configure", device);
    }
    // The daemon's settings for its end.
    vektransport::VekLineSettings::makeRaw(tio, speed);
    if (tcsetattr(fd_, TCSANOW, &tio) != 0) {
        return reason("configure", device);
    }
    askLowLatency(device);
    return "";
}

void VekSerialLine::askLowLatency(const std::string& device) {
    // Without it a serial driver may hold received bytes back for a tick; a request's
    // answer then waits for the kernel as well as for the cable's bridge.
    serial_struct serial{};
    if (ioctl(fd_, TIOCGSERIAL, &serial) != 0) {
        return;  // not a serial port with driver settings (a pseudo-terminal)
    }
    if ((serial.flags & ASYNC_LOW_LATENCY) != 0) {
        return;
    }
    serial.flags |= ASYNC_LOW_LATENCY;
    if (ioctl(fd_, TIOCSSERIAL, &serial) != 0) {
        latencyNote_ = device + ": the kernel refused low latency (" + std::strerror(errno) +
                       "); answers may come a little later";
    }
}

void VekSerialLine::adopt(int fd) {
    fd_ = fd;
    owned_ = false;
}

ssize_t VekSerialLine::receive(char* buffer, size_t size, int timeoutMs) {
    pollfd p{fd_, POLLIN, 0};
    const int ready = poll(&p, 1, timeoutMs);
    if (ready < 0) {
        return errno == EINTR ? 0 : -1;
    }
    if (ready == 0) {
        return 0;
    }
    const ssize_t n = ::read(fd_, buffer, size);
    if (n > 0) {
        tap(received_, false, buffer, static_cast<size_t>(n));
        return n;
    }
    if (n < 0 && (errno == EAGAIN || errno == EINTR)) {
        return 0;
    }
    if (n == 0) {
        errno = EIO;  // readable with nothing to read: the other end is gone
    }
    return -1;
}

bool VekSerialLine::send(const std::string& bytes, int timeoutMs) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd_, bytes.data() + done, bytes.size() - done);
        if (n > 0) {
            tap(sent_, true, bytes.data() + done, static_cast<size_t>(n));
            done += static_cast<size_t>(n);
            continue;
        }
        if (n < 0 && errno != EAGAIN && errno != EINTR) {
            return false;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd p{fd_, POLLOUT, 0};
        if (left <= 0 || poll(&p, 1, static_cast<int>(left)) == 0) {
            errno = ETIMEDOUT;
            return false;
        }
    }
    return true;
}

void VekSerialLine::trace(std::vector<VekTraceSink*> sinks, std::string path) {
    sinks_ = std::move(sinks);
    tracePath_ = std::move(path);
}

void VekSerialLine::noteReceived(const std::string& bytes) {
    tap(received_, false, bytes.data(), bytes.size());
}

void VekSerialLine::tap(VekTraceSplitter& splitter, bool outbound, const char* data,
                        size_t size) {
    if (sinks_.empty()) {
        return;
    }
    std::vector<VekTracePacket> packets;
    splitter.feed(data, size, nowUs(), packets);
    handOn(packets, outbound);
}

void VekSerialLine::handOn(std::vector<VekTracePacket>& packets, bool outbound) {
    for (VekTracePacket& packet : packets) {
        packet.outbound = outbound;
        for (VekTraceSink* sink : sinks_) {
            sink->record(tracePath_, packet);
        }
    }
    packets.clear();
}

}  // namespace vekmaster
