#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "LaunchTest.h"

namespace {

class MasterFeatureTest : public LaunchTest {};

// Every feature a default daemon serves; its answers printed as name=value lines.
TEST_F(MasterFeatureTest, TheShippedTourRunsToTheEnd) {
    const MasterRun::Result r = launch({"--script=" VEK_TOUR_PATH});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, stderrWith());
    for (const char* answer : {
             "> Common Feature\nfeatures=Common:EqV2:Gain:Hfe:Speaker:Vb\nOK\n",
             "> Gain GetChannel\nchannelGain=0:0:-3:-3:1.5:0\nOK\n",
             "> EqV2 GetBandConfig CF 7\nchannel=CF\nband=7\nvalue1=2\nvalue2=1000\n"
             "value3=-3.5\nvalue4=0.707\nvalue5=0\nvalue6=1\nOK\n",
             "> Hfe GetChannelConfig LF\nchannel=LF\nflag1=1\nflag2=0\nflag3=1\nvalue=0.5\nOK\n",
             "> Vb GetChannelConfig LF\nchannel=LF\nflag=1\nnumber=2\n"
             "params=0.5:1:100:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0\nOK\n",
             "> Speaker GetEnable\nenable=1:1:0:0:1:1\nOK\n",
         }) {
        EXPECT_NE(r.out.find(answer), std::string::npos) << answer;
    }
}

// Run where its documents go, as tools/try-tuning.sh runs it.
TEST_F(MasterFeatureTest, TheShippedTuningSessionRunsToTheEnd) {
    char directory[] = "/tmp/vek_session_XXXXXX";
    ASSERT_NE(mkdtemp(directory), nullptr);
    const MasterRun::Result r =
        launch({"--keep-going", "--script=" VEK_TUNING_PATH}, "", {}, directory);
    EXPECT_EQ(r.status, 1) << "the first diff differs";
    EXPECT_EQ(r.err, stderrWith());
    const std::string end = "OK: 4 values set, the device matches\n> diff first.json device\n";
    ASSERT_GE(r.out.size(), end.size());
    EXPECT_EQ(r.out.substr(r.out.size() - end.size()), end) << r.out;
    for (const char* name : {"/first.json", "/second.json"}) {
        EXPECT_EQ(std::remove((directory + std::string(name)).c_str()), 0) << name;
    }
    rmdir(directory);
}

// Eq and Reverb are served only when the daemon is told to: DAEMON-ARGS reach it.
TEST_F(MasterFeatureTest, DaemonArgumentsFollowTheDoubleDash) {
    MasterRun::TempFile script(
        "Eq SetBandConfig LF 2 1 500 0.5 2 -1 3\nEq GetBandConfig LF 2\n"
        "Reverb SetMode 3\nReverb GetMode\n");
    const MasterRun::Result r =
        launch({"--script=" + script.path(), "--", "--eqMode=1", "--reverb"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out,
              "> Eq SetBandConfig LF 2 1 500 0.5 2 -1 3\nOK\n> Eq GetBandConfig LF 2\n"
              "channel=LF\nband=2\nvalue1=1\nvalue2=500\nvalue3=0.5\nvalue4=2\nvalue5=-1\n"
              "value6=3\nOK\n> Reverb SetMode 3\nOK\n> Reverb GetMode\nmode=3\nOK\n");
    EXPECT_EQ(r.err, stderrWith());
}

TEST_F(MasterFeatureTest, JsonKeepsArraysAndTypes) {
    MasterRun::TempFile script("Gain GetFadeBalance\nSpeaker GetEnable\nGain GetChannel\n");
    const MasterRun::Result r = launch({"--json", "--script=" + script.path()});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out,
              "{\"feature\":\"Gain\",\"message\":\"GetFadeBalanceResponse\",\"self\":1,"
              "\"status\":\"OK\",\"fields\":{\"fadeBalance\":[0,0,15]},\"rawDataLength\":0}\n"
              "{\"feature\":\"Speaker\",\"message\":\"GetEnableResponse\",\"self\":2,"
              "\"status\":\"OK\",\"fields\":{\"enable\":[true,true,true,true,true,true]},"
              "\"rawDataLength\":0}\n"
              "{\"feature\":\"Gain\",\"message\":\"GetChannelResponse\",\"self\":3,"
              "\"status\":\"OK\",\"fields\":{\"channelGain\":[0,-0.5,-2,-2.5,-1,-4]},"
              "\"rawDataLength\":0}\n");
}

}  // namespace
