#include <ostream>
#include <string>
#include <vector>

#include "LaunchTest.h"

namespace {

class MasterFeatureTest : public LaunchTest {};

// A script per feature: what is set reads back, printed as the master sees it.
struct Tour {
    const char* feature;
    std::vector<std::string> daemonArgs;
    std::string script;
    std::string out;
};

// Names the row in failure reports.
void PrintTo(const Tour& tour, std::ostream* os) {
    *os << tour.feature;
}

class MasterTourTest : public LaunchTest, public ::testing::WithParamInterface<Tour> {};

TEST_P(MasterTourTest, TheFeatureIsReachedAndItsAnswersPrinted) {
    const Tour& tour = GetParam();
    MasterRun::TempFile script(tour.script);
    std::vector<std::string> args{"--timeout=1000", "--script=" + script.path(), "--"};
    args.insert(args.end(), tour.daemonArgs.begin(), tour.daemonArgs.end());
    const MasterRun::Result r = launch(args);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, tour.out);
    EXPECT_EQ(r.err, stderrWith());
}

INSTANTIATE_TEST_SUITE_P(
    Features, MasterTourTest,
    ::testing::Values(
        Tour{"Common",
             {},
             "Common Feature\n",
             "> Common Feature\nfeatures=Common:EqV2:Gain:Hfe:Speaker:Vb\nOK\n"},
        Tour{"Gain",
             {},
             "Gain SetMaster -10\nGain GetMaster\nGain SetChannel 0 0 -3 -3 1.5 0\n"
             "Gain GetChannel\nGain GetFadeBalance\nGain SetFadeBalance 2 -1 15\n"
             "Gain GetFadeBalance\n",
             "> Gain SetMaster -10\nOK\n> Gain GetMaster\nmasterGain=-10\nOK\n"
             "> Gain SetChannel 0 0 -3 -3 1.5 0\nOK\n> Gain GetChannel\n"
             "channelGain=0:0:-3:-3:1.5:0\nOK\n> Gain GetFadeBalance\nfadeBalance=0:0:15\nOK\n"
             "> Gain SetFadeBalance 2 -1 15\nOK\n> Gain GetFadeBalance\nfadeBalance=2:-1:15\nOK\n"},
        Tour{"Speaker",
             {},
             "Speaker SetEnable 1 0 1 0 1 0\nSpeaker GetEnable\nSpeaker SetDelay 0.5 1 0.125 3 0 "
             "10\n"
             "Speaker GetDelay\nSpeaker SetSinePattern LF 1000\n",
             "> Speaker SetEnable 1 0 1 0 1 0\nOK\n> Speaker GetEnable\nenable=1:0:1:0:1:0\nOK\n"
             "> Speaker SetDelay 0.5 1 0.125 3 0 10\nOK\n> Speaker GetDelay\n"
             "delay=0.5:1:0.125:3:0:10\nOK\n> Speaker SetSinePattern LF 1000\nOK\n"},
        Tour{"EqV2",
             {},
             "EqV2 GetEnable\nEqV2 SetBandCount 10 10 5 5 3 0\nEqV2 GetBandCount\n"
             "EqV2 SetBandConfig RS 3 2 1000 -3.5 0.707 0 1\nEqV2 GetBandConfig RS 3\n",
             "> EqV2 GetEnable\nenable=1\nOK\n> EqV2 SetBandCount 10 10 5 5 3 0\nOK\n"
             "> EqV2 GetBandCount\nbandCount=10:10:5:5:3:0\nOK\n"
             "> EqV2 SetBandConfig RS 3 2 1000 -3.5 0.707 0 1\nOK\n> EqV2 GetBandConfig RS 3\n"
             "channel=RS\nband=3\nvalue1=2\nvalue2=1000\nvalue3=-3.5\nvalue4=0.707\nvalue5=0\n"
             "value6=1\nOK\n"},
        Tour{"Eq",
             {"--eqMode=1"},
             "Eq SetBandConfig LF 2 1 500 0.5 2 -1 3\nEq GetBandConfig LF 2\n",
             "> Eq SetBandConfig LF 2 1 500 0.5 2 -1 3\nOK\n> Eq GetBandConfig LF 2\n"
             "channel=LF\nband=2\nvalue1=1\nvalue2=500\nvalue3=0.5\nvalue4=2\nvalue5=-1\nvalue6=3\n"
             "OK\n"},
        Tour{"Hfe",
             {},
             "Hfe GetEnable\nHfe SetChannelConfig LF 1 0 1 0.5\nHfe GetChannelConfig LF\n",
             "> Hfe GetEnable\nenable=1\nOK\n> Hfe SetChannelConfig LF 1 0 1 0.5\nOK\n"
             "> Hfe GetChannelConfig LF\nchannel=LF\nflag1=1\nflag2=0\nflag3=1\nvalue=0.5\nOK\n"},
        Tour{"Vb",
             {},
             "Vb SetChannelConfig LS 1 3 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18\n"
             "Vb GetChannelConfig LS\n",
             "> Vb SetChannelConfig LS 1 3 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18\nOK\n"
             "> Vb GetChannelConfig LS\nchannel=LS\nflag=1\nnumber=3\n"
             "params=1:2:3:4:5:6:7:8:9:10:11:12:13:14:15:16:17:18\nOK\n"},
        Tour{"Reverb",
             {"--reverb"},
             "Reverb GetMode\nReverb SetMode 3\nReverb GetMode\n",
             "> Reverb GetMode\nmode=0\nOK\n> Reverb SetMode 3\nOK\n> Reverb "
             "GetMode\nmode=3\nOK\n"}),
    [](const ::testing::TestParamInfo<Tour>& info) { return std::string(info.param.feature); });

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
              "\"status\":\"OK\",\"fields\":{\"channelGain\":[0,0,0,0,0,0]},"
              "\"rawDataLength\":0}\n");
}

TEST_F(MasterFeatureTest, TheShippedTourRunsToTheEnd) {
    const MasterRun::Result r = launch({"--script=" VEK_TOUR_PATH});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, stderrWith());
    EXPECT_NE(r.out.find("> EqV2 GetBandConfig CF 7\nchannel=CF\nband=7\nvalue1=2\nvalue2=1000\n"
                         "value3=-3.5\nvalue4=0.707\nvalue5=0\nvalue6=1\nOK\n"),
              std::string::npos);
}

}  // namespace
