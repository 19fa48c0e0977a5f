#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "VekLog.h"

namespace {

std::string captured(void (*print)()) {
    testing::internal::CaptureStdout();
    print();
    return testing::internal::GetCapturedStdout();
}

TEST(VekLogTest, EachLevelHasItsPrefixAndDumpsHaveNone) {
    EXPECT_EQ(captured([] {
                  VekLog::error("Fail to read device, ret=%d.\n", -1);
                  VekLog::warn("Fd is invalid.\n");
                  VekLog::info("Support feature(%s).\n", "Gain");
                  VekLog::zip("%s to get master gain, ret=%d.\n", "Success", 0);
                  VekLog::plain("\n+SEND-%.*s-SEND\n\n", 3, "AS:\0x");
              }),
              "[AST][ERR]Fail to read device, ret=-1.\n"
              "[AST][WRN]Fd is invalid.\n"
              "[AST][INF]Support feature(Gain).\n"
              "[AST][ZIP]Success to get master gain, ret=0.\n"
              "\n+SEND-AS:-SEND\n\n");
}

TEST(VekLogTest, LongDumpsAreWrittenWhole) {
    // Past the formatting buffer on the stack: a 40 KB frame's send dump.
    static const std::string frame(40000, 'f');
    EXPECT_EQ(captured([] { VekLog::plain("\n+SEND-%s-SEND\n\n", frame.c_str()); }),
              "\n+SEND-" + frame + "-SEND\n\n");
    EXPECT_EQ(captured([] { VekLog::info("Fail to open file:%s.\n", frame.c_str()); }),
              "[AST][INF]Fail to open file:" + frame + ".\n");
}

TEST(VekLogTest, SignalLinesGoStraightToTheDescriptorAndKeepErrno) {
    std::fflush(stdout);
    testing::internal::CaptureStdout();
    errno = EINTR;
    VekLog::fromSignal(VekLog::kWarning, "Signal %d received.\n", 10);
    EXPECT_EQ(errno, EINTR);
    VekLog::fromSignal(VekLog::kPlain, "%s\n", std::string(600, 's').c_str());
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "[AST][WRN]Signal 10 received.\n" + std::string(511, 's'));
}

}  // namespace
