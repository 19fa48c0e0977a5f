#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

#include "DaemonHarness.h"

// Requests that could wedge or starve the daemon: after each, the next request is
// answered and SIGUSR1 still ends it with status 0.
namespace {

using namespace std::chrono_literals;

const char kFeature[] = "AS:2:0:Common:FeatureRequest:0:OK:\n";
const char kFeatureAnswer[] = "AS:2:0:Common:FeatureResponse:0:OK:<Common:EqV2:Gain:Hfe:Speaker:Vb>:\n";

class HostileInputTest : public ::testing::Test {
protected:
    HostileInputTest() : daemon({{}, ""}) {}
    void SetUp() override {
        ASSERT_TRUE(daemon.waitForOutput("+SEND-HELLO!\n-SEND\n\n") &&
                    daemon.waitForOutput("FT232 state is abnormal"));
    }
    void TearDown() override {
        daemon.signal(SIGUSR1);
        EXPECT_EQ(daemon.waitExit(), 0);
        EXPECT_TRUE(daemon.waitForOutput("[AST][INF]Ending vek_tuner.\n", 0ms));
    }

    // A file that is not a regular one: answered as one that cannot be opened, at once.
    void expectRefused(const std::string& path) {
        EXPECT_EQ(daemon.request("AS:1:0:Common:FileContentRequest:0:OK:<" + path + ">:\n"),
                  "AS:1:0:Common:FileContentResponse:0:OK:<" + path + ">:\n")
            << path;
        EXPECT_TRUE(
            daemon.waitForOutput("[AST][INF]Fail to open file:" + path + ", error(22):Invalid argument.\n", 0ms))
            << path;
        EXPECT_EQ(daemon.request(kFeature), kFeatureAnswer) << "after " << path;
    }

    DaemonHarness daemon;
};

TEST_F(HostileInputTest, FifoIsNotOpened) {
    char dir[] = "/tmp/vek_fifo_XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    const std::string fifo = std::string(dir) + "/fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    expectRefused(fifo);
    unlink(fifo.c_str());
    rmdir(dir);
}

TEST_F(HostileInputTest, EndlessDeviceIsNotRead) {
    expectRefused("/dev/zero");
}

TEST_F(HostileInputTest, OwnSerialLineIsNotRead) {
    expectRefused(daemon.slavePath());
}

// 40,900 bytes of a 40,960-byte frame are held; a 100-byte chunk holding the 60 missing
// bytes and a whole request does not fit and is dropped whole, unanswered.
TEST_F(HostileInputTest, ChunkThatDoesNotFitIsDroppedAndTheHeldFrameStillCompletes) {
    const std::string frame =
        "AS:9:0:Common:VersionRequest:40914:OK:<M1.0>:\n" + std::string(40914, 'v');
    ASSERT_EQ(frame.size(), 40960u);
    daemon.send(frame.substr(0, 40900));
    ASSERT_TRUE(daemon.waitUntilTaken());
    daemon.send(frame.substr(40900) + "AS:9:0:Gain:GetFadeBalanceRequest:0:OK:\n");
    ASSERT_TRUE(daemon.waitUntilTaken());
    EXPECT_EQ(daemon.nextFrame(300ms), "");
    EXPECT_TRUE(daemon.waitForOutput(
        "There is not enough buffer to cache data(40960 < 40900 + 100).\n", 0ms));

    EXPECT_EQ(daemon.request(frame.substr(40900)),
              "AS:1:0:Common:VersionResponse:0:OK:<A00020001>:\n");
    EXPECT_EQ(daemon.request(kFeature),
              "AS:2:0:Common:FeatureResponse:0:OK:<Common:EqV2:Gain:Hfe:Speaker:Vb>:\n");
}

}  // namespace
