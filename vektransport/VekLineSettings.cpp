#include "VekLineSettings.h"

namespace vektransport {

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

}  // namespace

bool VekLineSettings::speedFor(int32_t baudRate, speed_t& speed) {
    for (const SpeedEntry& entry : kSpeeds) {
        if (entry.baudRate == baudRate) {
            speed = entry.speed;
            return true;
        }
    }
    return false;
}

std::string VekLineSettings::rates() {
    std::string list;
    for (const SpeedEntry& entry : kSpeeds) {
        list += (list.empty() ? "" : " ") + std::to_string(entry.baudRate);
    }
    return list;
}

void VekLineSettings::makeRaw(termios& tio, speed_t speed) {
    cfsetispeed(&tio, speed);
    cfsetospeed(&tio, speed);
    tio.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS | PARENB | CSTOPB | CSIZE);
    tio.c_cflag |= static_cast<tcflag_t>(CS8 | CLOCAL | CREAD);
    // Frames are text, but CR/LF and flow-control bytes are data here.
    tio.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ECHOE | ISIG);
    tio.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF | IXANY | INLCR | ICRNL);
    tio.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    tio.c_cc[VMIN] = 0;
    tio.c_cc[VTIME] = 10;
}

}  // namespace vektransport
