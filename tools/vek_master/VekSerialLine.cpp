#include "VekSerialLine.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace vekmaster {

namespace {

struct SpeedEntry {
    int32_t baudRate;
    speed_t speed;
};

const SpeedEntry kSpeeds[] = {
    {110, B110},       {300, B300},       {600, B600},       {1200, B1200},     {2400, B2400},
    {4800, B4800},     {9600, B9600},     {19200, B19200},   {38400, B38400},   {57600, B57600},
    {115200, B115200}, {230400, B230400}, {460800, B460800}, {921600, B921600},
};

std::string reason(const char* what, const std::string& device) {
    const int err = errno;
    return std::string("cannot ") + what + ' ' + device + ": " + std::strerror(err);
}

}  // namespace

VekSerialLine::~VekSerialLine() {
    if (owned_ && fd_ >= 0) {
        ::close(fd_);
    }
}

bool VekSerialLine::speedFor(int32_t baudRate, speed_t& speed) {
    for (const SpeedEntry& entry : kSpeeds) {
        if (entry.baudRate == baudRate) {
            speed = entry.speed;
            return true;
        }
    }
    return false;
}

std::string VekSerialLine::speeds() {
    std::string list;
    for (const SpeedEntry& entry : kSpeeds) {
        list += (list.empty() ? "" : " ") + std::to_string(entry.baudRate);
    }
    return list;
}

std::string VekSerialLine::open(const std::string& device, int32_t baudRate) {
    speed_t speed = B115200;
    speedFor(baudRate, speed);
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
    cfsetispeed(&tio, speed);
    cfsetospeed(&tio, speed);
    // The daemon's settings for its end: 8N1, no flow control, raw bytes both ways.
    tio.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS | PARENB | CSTOPB | CSIZE);
    tio.c_cflag |= static_cast<tcflag_t>(CS8 | CLOCAL | CREAD);
    tio.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ECHOE | ISIG);
    tio.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF | IXANY | INLCR | ICRNL);
    tio.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    tio.c_cc[VMIN] = 0;
    tio.c_cc[VTIME] = 10;
    if (tcsetattr(fd_, TCSANOW, &tio) != 0) {
        return reason("configure", device);
    }
    return "";
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

}  // namespace vekmaster
