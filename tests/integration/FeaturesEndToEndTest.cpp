#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

#include "DaemonHarness.h"

namespace {

// A daemon that has greeted and announced its features; stopped in order at the end.
struct Running {
    explicit Running(DaemonHarness::Options options) : daemon(std::move(options)) {
        started = daemon.waitForOutput("+SEND-HELLO!\n-SEND\n\n") &&
                  daemon.waitForOutput("FT232 state is abnormal");
    }
    ~Running() {
        daemon.signal(SIGUSR1);
        EXPECT_EQ(daemon.waitExit(), 0);
    }
    std::vector<std::string> supportLines() const {
        return daemon.lines("[AST][INF]Support feature(");
    }
    DaemonHarness daemon;
    bool started = false;
};

// Requests and the one answer each; response numbers count on across a table.
struct Exchange {
    const char* request;
    const char* response;
};

void expectExchanges(DaemonHarness& daemon, const std::vector<Exchange>& table) {
    for (const Exchange& e : table) {
        EXPECT_EQ(daemon.request(e.request), e.response) << e.request;
    }
}

TEST(FeaturesEndToEndTest, EveryDefaultFeatureReadsBackWhatWasSet) {
    Running run({{}, ""});
    ASSERT_TRUE(run.started);
    EXPECT_EQ(run.supportLines(),
              (std::vector<std::string>{
                  "[AST][INF]Support feature(Speaker).", "[AST][INF]Support feature(Gain).",
                  "[AST][INF]Support feature(EqV2).", "[AST][INF]Support feature(Hfe).",
                  "[AST][INF]Support feature(Vb)."}));
    EXPECT_EQ(run.daemon.request("AS:7:0:Common:VersionRequest:0:OK:<M1.0>:\n"),
              "AS:1:0:Common:VersionResponse:0:OK:<A00020001>:\n");
    EXPECT_TRUE(run.daemon.waitForOutput(
        "\n+RECV-AS:7:0:Common:VersionRequest:0:OK:<M1.0>:\n-RECV\n\n"
        "[AST][INF]onVersionRequest, self=7, peer=0, fail=0, rawDataLength=0.\n"
        "[AST][INF]Master version=M1.0, slave version=A00020001.\n"
        "\n+SEND-AS:1:0:Common:VersionResponse:0:OK:<A00020001>:\n-SEND\n\n"));
    expectExchanges(
        run.daemon,
        {
            {"AS:2:0:Common:FeatureRequest:0:OK:\n",
             "AS:2:0:Common:FeatureResponse:0:OK:<Common:EqV2:Gain:Hfe:Speaker:Vb>:\n"},
            {"AS:3:0:Common:SetBypassRequest:0:OK:<1>:\n",
             "AS:3:0:Common:SetBypassResponse:0:OK:\n"},
            {"AS:4:0:Common:GetBypassRequest:0:OK:\n",
             "AS:4:0:Common:GetBypassResponse:0:OK:<1>:\n"},
            {"AS:5:0:Gain:SetChannelRequest:0:OK:<0:0:-3:-3:1.5:0>:\n",
             "AS:5:0:Gain:SetChannelResponse:0:OK:\n"},
            {"AS:6:0:Gain:GetChannelRequest:0:OK:\n",
             "AS:6:0:Gain:GetChannelResponse:0:OK:<0:0:-3:-3:1.5:0>:\n"},
            {"AS:7:0:Speaker:SetDelayRequest:0:OK:<0.5:1:0.125:3.33333:0:10>:\n",
             "AS:7:0:Speaker:SetDelayResponse:0:OK:\n"},
            {"AS:8:0:Speaker:GetDelayRequest:0:OK:\n",
             "AS:8:0:Speaker:GetDelayResponse:0:OK:<0.5:1:0.125:3.33333:0:10>:\n"},
            {"AS:9:0:EqV2:SetBandConfigRequest:0:OK:<CF:7:2:-1:-3.5:0.707:0:1>:\n",
             "AS:9:0:EqV2:SetBandConfigResponse:0:OK:\n"},
            {"AS:10:0:EqV2:GetBandConfigRequest:0:OK:<CF:7>:\n",
             "AS:10:0:EqV2:GetBandConfigResponse:0:OK:<CF:7:2:65535:-3.5:0.707:0:1>:\n"},
            {"AS:11:0:Hfe:SetChannelConfigRequest:0:OK:<RS:1:0:1:2.5>:\n",
             "AS:11:0:Hfe:SetChannelConfigResponse:0:OK:\n"},
            {"AS:12:0:Hfe:GetChannelConfigRequest:0:OK:<RS>:\n",
             "AS:12:0:Hfe:GetChannelConfigResponse:0:OK:<RS:1:0:1:2.5>:\n"},
            {"AS:13:0:Vb:SetChannelConfigRequest:0:OK:<LS:1:-1:1:2:3:4:5:6:7:8:9:10:11:12:13:14:"
             "15:16:17:18>:\n",
             "AS:13:0:Vb:SetChannelConfigResponse:0:OK:\n"},
            {"AS:14:0:Vb:GetChannelConfigRequest:0:OK:<LS>:\n",
             "AS:14:0:Vb:GetChannelConfigResponse:0:OK:<LS:1:65535:1:2:3:4:5:6:7:8:9:10:11:12:"
             "13:14:15:16:17:18>:\n"},
        });
    // Features this run does not serve get no answer.
    run.daemon.send("AS:15:0:Reverb:GetModeRequest:0:OK:\n");
    run.daemon.send("AS:16:0:Eq:GetBandCountRequest:0:OK:\n");
    EXPECT_EQ(run.daemon.request("AS:17:0:Vb:GetEnableRequest:0:OK:\n"),
              "AS:15:0:Vb:GetEnableResponse:0:OK:<1>:\n");
}

TEST(FeaturesEndToEndTest, FileContentIsSentAsRawBytes) {
    Running run({{}, ""});
    ASSERT_TRUE(run.started);
    char path[] = "/tmp/vek_content_XXXXXX";
    const int fd = mkstemp(path);
    const std::string bytes("<a>\0b\n", 6);
    ASSERT_EQ(write(fd, bytes.data(), bytes.size()), 6);
    close(fd);
    const std::string header =
        std::string("AS:1:0:Common:FileContentResponse:6:OK:<") + path + ">:\n";
    EXPECT_EQ(
        run.daemon.request(std::string("AS:9:0:Common:FileContentRequest:0:OK:<") + path + ">:\n"),
        header + bytes);
    // The send dump stops at the zero byte.
    EXPECT_TRUE(run.daemon.waitForOutput("\n+SEND-" + header + "<a>-SEND\n\n"));
    unlink(path);
}

TEST(FeaturesEndToEndTest, FixedEqualiserReverbAndAbsentEffects) {
    Running run({{"--eqMode=1", "--reverb"}, "absent=hfe;on=vb"});
    ASSERT_TRUE(run.started);
    const std::string out = run.daemon.output();
    EXPECT_NE(out.find("[AST][ZIP]Success to enable EQ, ret=0.\n"), std::string::npos);
    EXPECT_EQ(out.find("to enable Vb"), std::string::npos) << "already on";
    EXPECT_EQ(run.supportLines(),
              (std::vector<std::string>{
                  "[AST][INF]Support feature(Speaker).", "[AST][INF]Support feature(Gain).",
                  "[AST][INF]Support feature(Eq).", "[AST][INF]Support feature(Vb).",
                  "[AST][INF]Support feature(Reverb)."}));
    run.daemon.send("AS:1:0:Hfe:GetEnableRequest:0:OK:\n");
    run.daemon.send("AS:1:0:EqV2:GetBandCountRequest:0:OK:\n");
    run.daemon.send("AS:1:0:Eq:SetBandCountRequest:0:OK:<1:1:1:1:1:1>:\n");
    run.daemon.send("AS:1:0:Reverb:SetEnableRequest:0:OK:<1>:\n");
    expectExchanges(
        run.daemon,
        {
            {"AS:1:0:Common:FeatureRequest:0:OK:\n",
             "AS:1:0:Common:FeatureResponse:0:OK:<Common:Eq:Gain:Reverb:Speaker:Vb>:\n"},
            {"AS:2:0:Eq:SetBandConfigRequest:0:OK:<L1:19:1:2:3:4:5:6>:\n",
             "AS:2:0:Eq:SetBandConfigResponse:0:OK:\n"},
            {"AS:3:0:Eq:GetBandConfigRequest:0:OK:<L1:19>:\n",
             "AS:3:0:Eq:GetBandConfigResponse:0:OK:<L1:19:1:2:3:4:5:6>:\n"},
            {"AS:4:0:Reverb:SetModeRequest:0:OK:<-2>:\n", "AS:4:0:Reverb:SetModeResponse:0:OK:\n"},
            {"AS:5:0:Reverb:GetModeRequest:0:OK:\n", "AS:5:0:Reverb:GetModeResponse:0:OK:<-2>:\n"},
        });
}

TEST(FeaturesEndToEndTest, NoEqualiserAndFailingLibrary) {
    Running run({{}, "absent=equalizer,hfe,vb;fail=getMasterGain:-5"});
    ASSERT_TRUE(run.started);
    EXPECT_EQ(run.supportLines(), (std::vector<std::string>{"[AST][INF]Support feature(Speaker).",
                                                            "[AST][INF]Support feature(Gain)."}));
    EXPECT_EQ(run.daemon.request("AS:1:0:Gain:GetMasterRequest:0:OK:\n"),
              "AS:1:0:Gain:GetMasterResponse:0:NG:<0>:\n");
    EXPECT_TRUE(run.daemon.waitForOutput("[AST][ZIP]Fail to get master gain, ret=-5.\n"));
}

}  // namespace
