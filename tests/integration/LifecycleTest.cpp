#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "DaemonHarness.h"

namespace {

using namespace std::chrono_literals;

const char kHelp[] =
    "[AST][INF]\n"
    "[AST][INF]NAME\n"
    "[AST][INF]    vek_tuner\n"
    "[AST][INF]\n"
    "[AST][INF]SYNOPSIS\n"
    "[AST][INF]    vek_tuner [OPTION]...\n"
    "[AST][INF]\n"
    "[AST][INF]DESCRIPTION\n"
    "[AST][INF]    Run the slave of VEK(Dravino Audio Tuner).\n"
    "[AST][INF]    Mandatory arguments to long options ONLY.\n"
    "[AST][INF]\n"
    "[AST][INF]    --progress=progressName [default=vek_server]\n"
    "[AST][INF]      Name of current progress.\n"
    "[AST][INF]    --device=deviceName [default=/dev/ttyUSB0]\n"
    "[AST][INF]      Path of UART device.\n"
    "[AST][INF]    --baudRate=baudRate [default=115200]\n"
    "[AST][INF]      Speed of UART device.\n"
    "[AST][INF]    --eqMode=mode [default=0]\n"
    "[AST][INF]      0: Flexible EQ bands configured.\n"
    "[AST][INF]      1: Fixed 20 EQ bands.\n"
    "[AST][INF]    --reverb\n"
    "[AST][INF]      Enable reverb app effect or not.\n"
    "[AST][INF]    --help\n"
    "[AST][INF]      Help specification.\n"
    "[AST][INF]\n"
    "[AST][INF]  EXIT STATUS\n"
    "[AST][INF]    0  - Success ALWAYS.\n"
    "[AST][INF]\n";

TEST(LifecycleTest, HelpPrintsTheTextEachTimeAndTheArgsLine) {
    DaemonHarness daemon({{"--help", "--device=/dev/ttyS1", "--baudRate=abc", "--eqMode=2",
                           "--reverb=1", "-h", "--help", "--progress="},
                          "",
                          false});
    EXPECT_EQ(daemon.waitExit(), 0);
    EXPECT_EQ(daemon.output(), std::string("[AST][INF]Starting vek_tuner.\n") + kHelp + kHelp +
                                   "[AST][INF]Args: progressName=, device=/dev/ttyS1, "
                                   "baudRate=0, eqMode=2, enReverb=0.\n");
}

TEST(LifecycleTest, StartsGreetsAndStopsInOrderOnSigusr1) {
    DaemonHarness daemon({{"--baudRate=921600", "--progress=vek_test"}, ""});
    ASSERT_TRUE(daemon.waitForOutput("\n+SEND-HELLO!\n-SEND\n\n"));
    const std::string start = daemon.output();
    EXPECT_EQ(start.rfind("[AST][INF]Starting vek_tuner.\n[AST][INF]Args: progressName=vek_test, "
                          "device=" +
                              daemon.slavePath() +
                              ", baudRate=921600, eqMode=0, enReverb=0.\n\n+SEND-HELLO!\n-SEND\n\n",
                          0),
              0u)
        << start;
    daemon.signal(SIGUSR1);
    daemon.signal(SIGUSR1);
    EXPECT_EQ(daemon.waitExit(), 0);
    const std::string out = daemon.output();
    EXPECT_NE(out.find("[AST][WRN]Signal 10 received.\n"), std::string::npos);
    const std::string ending = "[AST][INF]Ending vek_tuner.\n";
    ASSERT_GE(out.size(), ending.size());
    EXPECT_EQ(out.substr(out.size() - ending.size()), ending) << out;
}

TEST(LifecycleTest, SigtermGivesTheCrashReportAndStatus255) {
    DaemonHarness daemon({{}, ""});
    ASSERT_TRUE(daemon.waitForOutput("+SEND-HELLO!"));
    daemon.signal(SIGTERM);
    EXPECT_EQ(daemon.waitExit(), 255);
    const std::string out = daemon.output();
    // The report's lines in order; the serving thread may log a line of its own between
    // them (its cable check), each line still whole.
    size_t at = 0;
    for (const char* line : {"[AST][WRN]Signal 15 received.\n", "\nsignum = 15\n",
                             "\ninfo.si_errno = 0\n", "\ninfo.si_addr  = "}) {
        at = out.find(line, at);
        ASSERT_NE(at, std::string::npos) << line << " missing or out of order in:\n" << out;
    }
    EXPECT_NE(out.find("Stack trace:\n"), std::string::npos);
    EXPECT_NE(out.find("End of stack trace\n"), std::string::npos);
    EXPECT_EQ(out.find("Ending vek_tuner"), std::string::npos);
}

TEST(LifecycleTest, MissingDeviceStillStopsInOrder) {
    DaemonHarness daemon({{"--device=/no/such/tty"}, "", false});
    ASSERT_TRUE(
        daemon.waitForOutput("[AST][WRN]Fd is invalid.\n[AST][ERR]Device is disconnected.\n"));
    EXPECT_EQ(daemon.output().find("Support feature"), std::string::npos);
    daemon.signal(SIGUSR1);
    EXPECT_EQ(daemon.waitExit(), 0);
    EXPECT_NE(daemon.output().find("[AST][INF]Ending vek_tuner.\n"), std::string::npos);
}

// The simulated library used to log every call with its parameter buffer, for tests
// to read: a daemon serving for days grew by over 1 KiB per equaliser request.
TEST(LifecycleTest, ServingKeepsNoRecordOfPastRequests) {
    if (DaemonHarness::kSanitized) {
        GTEST_SKIP() << "resident memory is the sanitizer's here";
    }
    DaemonHarness daemon({{}, ""});
    ASSERT_TRUE(daemon.waitForOutput("FT232 state is abnormal"));
    const auto serve = [&daemon](int count) {
        std::string last;
        for (int i = 0; i < count; ++i) {
            last =
                daemon.request("AS:1:0:EqV2:SetBandConfigRequest:0:OK:<CF:7:2:-1:-3.5:0.7:0:1>:\n");
        }
        return last;
    };
    serve(300);
    const long settled = daemon.residentKb();
    EXPECT_EQ(serve(1000), "AS:1300:0:EqV2:SetBandConfigResponse:0:OK:\n");
    // Not zero: resident memory moves by whole pages while the allocator settles. The
    // call log grew it by 1.4 MiB here.
    EXPECT_LE(daemon.residentKb() - settled, 256) << "after 1000 requests, from " << settled;
    daemon.signal(SIGUSR1);
    EXPECT_EQ(daemon.waitExit(), 0);
}

TEST(LifecycleTest, LostLineEndsTheServerThreadButNotTheProcess) {
    DaemonHarness daemon({{}, ""});
    ASSERT_TRUE(daemon.waitForOutput("+SEND-HELLO!"));
    daemon.closeMaster();
    ASSERT_TRUE(daemon.waitForOutput("[AST][ERR]Device is disconnected.\n") ||
                daemon.waitForOutput("[AST][ERR]Fail to read device", 100ms));
    const std::string out = daemon.output();
    const bool disconnected = out.find("Device is disconnected") != std::string::npos;
    const bool readFailed = out.find("Fail to read device") != std::string::npos;
    EXPECT_NE(disconnected, readFailed) << "exactly one ending:\n" << out;
    EXPECT_EQ(daemon.waitExit(300ms), -1) << "the process stays up";
    daemon.signal(SIGUSR1);
    EXPECT_EQ(daemon.waitExit(), 0);
}

}  // namespace
