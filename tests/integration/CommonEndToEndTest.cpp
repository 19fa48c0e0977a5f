#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <fstream>

#include "DaemonHarness.h"

namespace {

using namespace std::chrono_literals;

class CommonEndToEndTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(daemon.waitForOutput("+SEND-HELLO!\n-SEND")); }
    void TearDown() override {
        daemon.signal(SIGUSR1);
        EXPECT_EQ(daemon.waitExit(), 0);
    }
    DaemonHarness daemon{{}};
};

TEST_F(CommonEndToEndTest, VersionFeaturesAndFileListsAreAnswered) {
    EXPECT_EQ(daemon.request("AS:7:0:Common:VersionRequest:0:OK:<M1.0>:\n"),
              "AS:1:0:Common:VersionResponse:0:OK:<A00020001>:\n");
    EXPECT_TRUE(daemon.waitForOutput(
        "\n+RECV-AS:7:0:Common:VersionRequest:0:OK:<M1.0>:\n-RECV\n\n"
        "[AST][INF]onVersionRequest, self=7, peer=0, fail=0, rawDataLength=0.\n"
        "[AST][INF]Master version=M1.0, slave version=A00020001.\n"
        "\n+SEND-AS:1:0:Common:VersionResponse:0:OK:<A00020001>:\n-SEND\n\n"));

    const std::string features = daemon.request("AS:2:0:Common:FeatureRequest:0:NG:\n");
    EXPECT_EQ(features, "AS:2:0:Common:FeatureResponse:0:OK:<Common:EqV2:Gain:Hfe:Speaker:Vb>:\n");
    EXPECT_TRUE(daemon.waitForOutput(
        "[AST][INF]onFeatureRequest, self=2, peer=0, fail=1, rawDataLength=0\n"));

    EXPECT_EQ(daemon.request("AS:3:0:Common:FileListRequest:0:OK:<Gain:x>:\n"),
              "AS:3:0:Common:FileListResponse:0:OK:<Gain:/media/flash/nvm/mixhub/"
              "volume_property.xml>:\n");
    EXPECT_EQ(daemon.request("AS:4:0:Common:FileListRequest:0:OK:<Reverb>:\n"),
              "AS:4:0:Common:FileListResponse:0:OK:<Reverb:>:\n");
    EXPECT_EQ(daemon.request("AS:5:0:Common:FileListRequest:0:OK:<Common>:\n"),
              "AS:5:0:Common:FileListResponse:0:OK:<Common:>:\n");
    // Unknown names, response names and malformed requests get no answer.
    daemon.send("AS:6:0:Common:VersionResponse:0:OK:<x>:\n");
    daemon.send("AS:6:0:Common:SetBypassRequest:0:OK:\n");
    daemon.send("AS:6:0:Common:SetBypassRequest:0:OK:<on>:\n");
    daemon.send("AS:6:0:Nope:FeatureRequest:0:OK:\n");
    EXPECT_EQ(daemon.request("AS:6:0:Common:GetBypassRequest:0:OK:\n"),
              "AS:6:0:Common:GetBypassResponse:0:OK:<0>:\n");
}

TEST_F(CommonEndToEndTest, FileContentIsSentAsRawBytes) {
    char path[] = "/tmp/vek_content_XXXXXX";
    const int fd = mkstemp(path);
    const std::string bytes("<a>\0b\n", 6);
    ASSERT_EQ(write(fd, bytes.data(), bytes.size()), 6);
    close(fd);

    const std::string header =
        std::string("AS:1:0:Common:FileContentResponse:6:OK:<") + path + ">:\n";
    EXPECT_EQ(
        daemon.request(std::string("AS:9:0:Common:FileContentRequest:0:OK:<") + path + ">:\n"),
        header + bytes);
    EXPECT_TRUE(daemon.waitForOutput(std::string("[AST][INF]Success to open file:") + path +
                                     ", length=6.\n"));
    // The send dump stops at the zero byte.
    EXPECT_TRUE(daemon.waitForOutput("\n+SEND-" + header + "<a>-SEND\n\n"));

    EXPECT_EQ(daemon.request("AS:10:0:Common:FileContentRequest:0:OK:</no/such/file>:\n"),
              "AS:2:0:Common:FileContentResponse:0:OK:</no/such/file>:\n");
    EXPECT_TRUE(daemon.waitForOutput(
        "[AST][INF]Fail to open file:/no/such/file, error(2):No such file or directory.\n"));
    unlink(path);
}

TEST_F(CommonEndToEndTest, BypassIsSwitchedAndReadBack) {
    EXPECT_EQ(daemon.request("AS:9:0:Common:SetBypassRequest:0:OK:<1>:\n"),
              "AS:1:0:Common:SetBypassResponse:0:OK:\n");
    EXPECT_TRUE(daemon.waitForOutput("[AST][ZIP]Success to set bypass, ret=0, enable=1.\n"));
    EXPECT_EQ(daemon.request("AS:10:0:Common:GetBypassRequest:0:OK:\n"),
              "AS:2:0:Common:GetBypassResponse:0:OK:<1>:\n");
    EXPECT_TRUE(daemon.waitForOutput("[AST][ZIP]Success to get bypass, ret=0, enable=1.\n"));
    // 2 is not 1: the bypass goes off.
    daemon.request("AS:11:0:Common:SetBypassRequest:0:OK:<2>:\n");
    EXPECT_EQ(daemon.request("AS:12:0:Common:GetBypassRequest:0:OK:\n"),
              "AS:4:0:Common:GetBypassResponse:0:OK:<0>:\n");
}

TEST(CommonWithoutLibraryTest, BypassFailsWithNgWhenNoAppCanBeMade) {
    DaemonHarness daemon({{}, "null=App"});
    ASSERT_TRUE(daemon.waitForOutput("+SEND-HELLO!\n-SEND"));
    EXPECT_EQ(daemon.request("AS:1:0:Common:GetBypassRequest:0:OK:\n"),
              "AS:1:0:Common:GetBypassResponse:0:NG:<0>:\n");
    EXPECT_EQ(daemon.request("AS:2:0:Common:SetBypassRequest:0:OK:<1>:\n"),
              "AS:2:0:Common:SetBypassResponse:0:NG:\n");
    EXPECT_TRUE(
        daemon.waitForOutput("[AST][ZIP]Fail to get bypass, ret=-1, enable=0.\n"
                             "\n+SEND-"));
    EXPECT_TRUE(daemon.waitForOutput("[AST][ZIP]Fail to set bypass, ret=-1, enable=1.\n"));
    daemon.signal(SIGUSR1);
    EXPECT_EQ(daemon.waitExit(), 0);
}

}  // namespace
