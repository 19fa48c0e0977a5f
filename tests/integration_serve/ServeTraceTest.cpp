#include <gtest/gtest.h>
#include <signal.h>

#include <string>
#include <vector>

#include "CabledDaemon.h"
#include "MasterRun.h"
#include "ServeRig.h"
#include "VekPcapng.h"

namespace {

using vekmaster::VekPcapng;
using vekmaster::VekTrace;

// The frames of a trace, each with its direction: what two captures of one line share.
std::vector<std::string> frames(const VekTrace& trace) {
    std::vector<std::string> out;
    for (const auto& p : trace.packets) {
        out.push_back((p.outbound ? "-> " : "<- ") + p.bytes);
    }
    return out;
}

TEST(ServeTraceTest, EachLinesTraceIsDownloadedAndTheCaptureFileHoldsTheSameFrames) {
    CabledDaemon daemon;
    MasterRun::TempFile capture;
    ServeRig serve({daemon.path()}, {"--trace=" + capture.path()});
    ASSERT_TRUE(serve.ready()) << serve.output();
    const ServeRig::Reply set = serve.call("POST", "/api/devices/0/request",
                                           R"({"feature":"Gain","message":"SetMaster","args":[-7]})");
    ASSERT_EQ(set.status, 200) << set.body;

    const ServeRig::Reply got = serve.call("GET", "/api/devices/0/trace");
    ASSERT_EQ(got.status, 200);
    EXPECT_EQ(got.headers.at("Content-Type"), "application/x-pcapng");
    EXPECT_EQ(got.headers.at("Content-Disposition"), "attachment; filename=\"vek-device0.pcapng\"");
    VekTrace downloaded;
    ASSERT_EQ(VekPcapng::decode(got.body, downloaded), "");
    EXPECT_EQ(downloaded.lines, std::vector<std::string>{daemon.path()});
    // The server asks for the version and features when the line connects (the greeting,
    // stray bytes, comes whenever the cable hands it over), then the client's request goes
    // out and is answered.
    const std::vector<std::string> seen = frames(downloaded);
    std::vector<std::string> framesOnly;
    for (const auto& p : downloaded.packets) {
        if (!p.stray) {
            framesOnly.push_back((p.outbound ? "-> " : "<- ") + p.bytes);
        } else {
            EXPECT_EQ(p.bytes, "HELLO!\n");
        }
    }
    EXPECT_EQ(framesOnly, (std::vector<std::string>{
                              "-> AS:1:0:Common:VersionRequest:0:OK:<vek_master>:\n",
                              "-> AS:2:0:Common:FeatureRequest:0:OK:\n",
                              "<- AS:1:0:Common:VersionResponse:0:OK:<A00020001>:\n",
                              "<- AS:2:0:Common:FeatureResponse:0:OK:<Common:EqV2:Gain:Hfe:Speaker:Vb>:\n",
                              "-> AS:3:0:Gain:SetMasterRequest:0:OK:<-7>:\n",
                              "<- AS:3:0:Gain:SetMasterResponse:0:OK:\n"}));

    EXPECT_EQ(serve.call("GET", "/api/devices/1/trace").status, 404);
    EXPECT_EQ(serve.stop(SIGTERM), 0);
    VekTrace file;
    ASSERT_EQ(VekPcapng::load(capture.path(), file), "");
    EXPECT_EQ(file.lines, downloaded.lines);
    EXPECT_EQ(frames(file), seen);
}

TEST(ServeTraceTest, TheTraceNeedsTheTokenLikeEveryRoute) {
    CabledDaemon daemon;
    const std::string token = "a-token-for-the-trace-test";
    MasterRun::TempFile tokenFile(token + "\n");
    ServeRig serve({daemon.path()}, {"--token-file=" + tokenFile.path()}, token);
    ASSERT_TRUE(serve.ready()) << serve.output();
    EXPECT_EQ(serve.call("GET", "/api/devices/0/trace").status, 401);
    const ServeRig::Reply got =
        serve.call("GET", "/api/devices/0/trace", "", {{"Authorization", "Bearer " + token}});
    EXPECT_EQ(got.status, 200);
    EXPECT_EQ(got.body.compare(0, 4, "\x0a\x0d\x0d\x0a"), 0);
}

}  // namespace
