#include <gtest/gtest.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <string>

#include "VekTransportUsb.h"

namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;
using vektransport::VekTransportUsb;

TEST(VekTransportUsbTest, RatesOutsideTheTableRunAt115200) {
    const std::pair<int32_t, speed_t> cases[] = {
        {921600, B921600}, {460800, B460800}, {57600, B57600}, {110, B110},
        {0, B115200},      {150, B115200},    {200, B115200},  {-9600, B115200},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(VekTransportUsb::speedFor(c.first), c.second) << c.first;
    }
}

TEST(VekTransportUsbTest, MissingDeviceLeavesEveryCallReportingItsFailure) {
    VekTransportUsb transport("/nonexistent/ttyVEK", 115200);
    char buffer[8];
    CaptureStdout();
    EXPECT_EQ(transport.open(), -1);
    EXPECT_TRUE(transport.isDisconnected());
    EXPECT_EQ(transport.read(buffer, sizeof(buffer)), -1);
    EXPECT_EQ(transport.write("HELLO!\n", 7), -1);
    EXPECT_EQ(transport.close(), -1);
    EXPECT_EQ(GetCapturedStdout(),
              "[AST][ERR]Fail to open device:/nonexistent/ttyVEK, reason:(2)No such file or "
              "directory.\n"
              "[AST][WRN]Fd is invalid.\n"
              "[AST][ERR]Fail to read device, ret=-1, reason:(9)Bad file descriptor.\n"
              "\n+SEND-HELLO!\n-SEND\n\n"
              "[AST][ERR]Fail to write device, ret=-1, reason:(9)Bad file descriptor.\n");
}

// The slave side of a pseudo-terminal stands in for the serial device.
class PtyTest : public ::testing::Test {
protected:
    void SetUp() override {
        char name[128] = {};
        ASSERT_EQ(openpty(&master, &slave, name, nullptr, nullptr), 0);
        // Not 921600: qemu-user, which runs the ARM builds' tests, drops every rate
        // above 460800 when it passes termios to the host.
        transport = std::make_unique<VekTransportUsb>(name, 460800);
    }
    void TearDown() override {
        transport->close();
        if (master != -1) ::close(master);
        ::close(slave);
    }
    std::string readMaster(size_t want) {
        std::string got(want, '\0');
        size_t have = 0;
        ssize_t n = 1;
        while (have < want && (n = ::read(master, &got[have], want - have)) > 0) have += n;
        return got.substr(0, have);
    }

    int master = -1;
    int slave = -1;
    std::unique_ptr<VekTransportUsb> transport;
};

TEST_F(PtyTest, OpenMakesTheLineRawAndKeepsUnrelatedFlags) {
    termios tio{};
    ASSERT_EQ(tcgetattr(slave, &tio), 0);
    tio.c_cflag = (tio.c_cflag & ~CSIZE) | CS7 | CRTSCTS | PARENB | CSTOPB;
    tio.c_iflag |= IXON | IXOFF | IXANY | INLCR | ICRNL | IGNBRK;
    tio.c_lflag |= ICANON | ECHO | ECHOE | ISIG | ECHONL;
    ASSERT_EQ(tcsetattr(slave, TCSANOW, &tio), 0);

    CaptureStdout();
    EXPECT_GE(transport->open(), 0);
    EXPECT_EQ(GetCapturedStdout(), "");
    ASSERT_EQ(tcgetattr(slave, &tio), 0);
    EXPECT_EQ(cfgetispeed(&tio), static_cast<speed_t>(B460800));
    EXPECT_EQ(cfgetospeed(&tio), static_cast<speed_t>(B460800));
    EXPECT_EQ(tio.c_cflag & (CRTSCTS | PARENB | CSTOPB | CSIZE | CLOCAL | CREAD),
              static_cast<tcflag_t>(CS8 | CLOCAL | CREAD));
    EXPECT_EQ(tio.c_lflag & (ICANON | ECHO | ECHOE | ISIG | ECHONL), static_cast<tcflag_t>(ECHONL));
    EXPECT_EQ(tio.c_iflag & (IXON | IXOFF | IXANY | INLCR | ICRNL | IGNBRK),
              static_cast<tcflag_t>(IGNBRK));
    EXPECT_EQ(tio.c_oflag & (OPOST | ONLCR), static_cast<tcflag_t>(ONLCR));
    EXPECT_EQ(tio.c_cc[VMIN], 0);
    EXPECT_EQ(tio.c_cc[VTIME], 10);
}

TEST_F(PtyTest, ReadPassesBytesUnchangedAndGivesUpAfterAboutASecond) {
    ASSERT_GE(transport->open(), 0);
    char buffer[64];
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(transport->read(buffer, sizeof(buffer)), 0);
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited, std::chrono::milliseconds(500));
    EXPECT_LT(waited, std::chrono::seconds(3));

    const std::string sent = "AS:\r\n\x11\x13\x03z";
    ASSERT_EQ(::write(master, sent.data(), sent.size()), static_cast<ssize_t>(sent.size()));
    const int32_t n = transport->read(buffer, sizeof(buffer));
    EXPECT_EQ(std::string(buffer, n > 0 ? n : 0), sent);
}

TEST_F(PtyTest, WriteDumpsTextUpToZeroByteAndSendsEveryByte) {
    const struct {
        std::string bytes;
        uint32_t length;
        const char* dump;
    } cases[] = {
        {std::string("AB\0CD\n", 6), 6, "\n+SEND-AB-SEND\n\n"},
        {"HELLO!\n", 3, "\n+SEND-HEL-SEND\n\n"},
        {"line\nnext\n", 10, "\n+SEND-line\nnext\n-SEND\n\n"},  // no CR added on the line
    };
    ASSERT_GE(transport->open(), 0);
    for (const auto& c : cases) {
        CaptureStdout();
        EXPECT_EQ(transport->write(c.bytes.data(), c.length), static_cast<int32_t>(c.length));
        EXPECT_EQ(GetCapturedStdout(), c.dump);
        EXPECT_EQ(readMaster(c.length), c.bytes.substr(0, c.length));
    }
}

// A pty has no modem lines: the bit read fails with ENOTTY, which says nothing about the
// link. Once the master goes away the slave is hung up and the read fails with EIO.
TEST_F(PtyTest, LinkCountsAsLostOnHangUpAndAfterClose) {
    ASSERT_GE(transport->open(), 0);
    CaptureStdout();
    EXPECT_FALSE(transport->isDisconnected());
    ::close(master);
    master = -1;
    EXPECT_TRUE(transport->isDisconnected());
    EXPECT_EQ(transport->close(), 0);
    EXPECT_EQ(transport->close(), -1);
    EXPECT_TRUE(transport->isDisconnected());
    EXPECT_EQ(GetCapturedStdout(),
              "[AST][WRN]FT232 state is abnormal.\n"
              "[AST][WRN]FT232 state is abnormal.\n"
              "[AST][WRN]Fd is invalid.\n");
}

}  // namespace
