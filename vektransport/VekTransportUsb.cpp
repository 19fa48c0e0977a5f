#include "VekTransportUsb.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

#include "VekLineSettings.h"
#include "VekLog.h"

namespace vektransport {

VekTransportUsb::VekTransportUsb(const std::string& device, int32_t baudRate)
    : device_(device), baudRate_(baudRate) {}

speed_t VekTransportUsb::speedFor(int32_t baudRate) {
    speed_t speed = B115200;
    VekLineSettings::speedFor(baudRate, speed);
    return speed;
}

int32_t VekTransportUsb::open() {
    if (fd_ != -1) {
        // Opening again must not leak the descriptor in hand.
        close();
    }
    fd_ = ::open(device_.c_str(), O_RDWR | O_NOCTTY);
    if (fd_ < 0) {
        const int err = errno;
        fd_ = -1;
        VekLog::error("Fail to open device:%s, reason:(%d)%s.\n", device_.c_str(), err,
                      std::strerror(err));
        return -1;
    }

    termios tio{};
    const int got = tcgetattr(fd_, &tio);
    if (got != 0) {
        return abandon("get", got);
    }
    VekLineSettings::makeRaw(tio, speedFor(baudRate_));
    const int set = tcsetattr(fd_, TCSANOW, &tio);
    if (set != 0) {
        return abandon("set", set);
    }
    return fd_;
}

int32_t VekTransportUsb::abandon(const char* what, int result) {
    const int err = errno;
    VekLog::error("Fail to %s serial port configuration, ret=%d, errno=(%d)%s.\n", what, result,
                  err, std::strerror(err));
    return close();
}

// Holds the descriptor through one call on the server thread. A close from the main
// thread meanwhile only parks the descriptor; the last call in flight closes it, so no
// call ever works on a descriptor that has been closed (or reused) under it.
class VekTransportUsb::Use {
public:
    explicit Use(VekTransportUsb& transport) : transport_(transport) {
        transport_.users_.fetch_add(1);
        fd = transport_.fd_.load();
    }
    ~Use() {
        if (transport_.users_.fetch_sub(1) == 1) {
            transport_.closeParked();
        }
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

    int32_t fd;

private:
    VekTransportUsb& transport_;
};

int32_t VekTransportUsb::close() {
    const int32_t old = fd_.exchange(-1);
    if (old == -1) {
        return -1;
    }
    parked_.store(old);
    return users_.load() == 0 ? closeParked() : 0;
}

int32_t VekTransportUsb::closeParked() {
    const int32_t old = parked_.exchange(-1);
    return old == -1 ? 0 : ::close(old);
}

void VekTransportUsb::reportTransfer(const char* what, int32_t result) {
    if (result < 0) {
        const int err = errno;
        VekLog::error("Fail to %s device, ret=%d, reason:(%d)%s.\n", what, static_cast<int>(result),
                      err, std::strerror(err));
    }
}

int32_t VekTransportUsb::read(char* buffer, uint32_t length) {
    // The count must fit the 32-bit result.
    const uint32_t want = length > INT32_MAX ? INT32_MAX : length;
    Use use(*this);
    const int32_t result = static_cast<int32_t>(::read(use.fd, buffer, want));
    reportTransfer("read", result);
    return result;
}

int32_t VekTransportUsb::write(const char* buffer, uint32_t length) {
    // The dump shows the text up to its first zero byte; the line still gets every byte.
    const int shown = buffer == nullptr ? 0 : static_cast<int>(length > INT_MAX ? INT_MAX : length);
    VekLog::plain("\n+SEND-%.*s-SEND\n\n", shown, buffer == nullptr ? "" : buffer);
    Use use(*this);
    const int32_t result = static_cast<int32_t>(::write(use.fd, buffer, length));
    reportTransfer("write", result);
    return result;
}

bool VekTransportUsb::isDisconnected() {
    Use use(*this);
    if (fcntl(use.fd, F_GETFL) == -1) {
        const int err = errno;
        VekLog::warn("Fd is invalid.\n");
        return err == EBADF;
    }
    int bits = 0;
    if (ioctl(use.fd, TIOCMGET, &bits) == -1) {
        // Lines a pulled cable leaves behind; other errors say nothing about the cable.
        const int err = errno;
        VekLog::warn("FT232 state is abnormal.\n");
        return err == ENODEV || err == EIO || err == ENXIO;
    }
    if (access(device_.c_str(), F_OK) != 0) {
        VekLog::error("Fd file is unexist.\n");
        return true;
    }
    if ((bits & TIOCM_DTR) != 0) {
        return false;
    }
    VekLog::error("FT232 DTR state is not ready.\n");
    return true;
}

}  // namespace vektransport
