#include <unistd.h>

#include <cstdio>

#include "ServerTestSupport.h"
#include "VekCommonSlaveCallbackImpl.h"

using namespace vekprotocol;
using namespace vekserver;

namespace {

using CommonServiceTest = ServiceTest<VekCommonSlave, VekCommonSlaveCallbackImpl>;

TEST_F(CommonServiceTest, VersionFeaturesAndFilesAnswerWithoutTheLibrary) {
    AudioSim::setNullFactory(AudioSim::Object::App, true);
    EXPECT_EQ(serve("AS:40:2:Common:VersionRequest:0:OK:<M1.0>:\n"),
              "[AST][INF]onVersionRequest, self=40, peer=2, fail=0, rawDataLength=0.\n"
              "[AST][INF]Master version=M1.0, slave version=A00020001.\n");
    EXPECT_EQ(response(), "AS:1:0:Common:VersionResponse:0:OK:<A00020001>:\n");

    hub.registerEndpoint("Gain", &endpoint);
    EXPECT_EQ(serve("AS:41:0:Common:FeatureRequest:0:NG:\n"),
              "[AST][INF]onFeatureRequest, self=41, peer=0, fail=1, rawDataLength=0\n");
    EXPECT_EQ(response(), "AS:2:0:Common:FeatureResponse:0:OK:<Common:Gain>:\n");

    const std::pair<const char*, const char*> lists[] = {
        {"Speaker", "Speaker:/media/flash/nvm/mixhub/app_property.xml"},
        {"Eq", "Eq:/media/flash/nvm/mixhub/app_property.xml"},
        {"EqV2", "EqV2:/media/flash/nvm/mixhub/audio_effect_equalizer.xml"},
        {"Vb", "Vb:/media/flash/nvm/mixhub/audio_effect_vb.xml"},
        {"Reverb", "Reverb:"},
        {"Foo", "Foo:"},
        {"gain", "gain:"},
    };
    for (const auto& l : lists) {
        serve(std::string("AS:1:0:Common:FileListRequest:0:OK:<") + l.first + ">:\n");
        EXPECT_EQ(response().substr(response().find('<')), std::string("<") + l.second + ">:\n");
    }
    EXPECT_EQ(AudioSim::calls().size(), 0u);
    EXPECT_EQ(transport.writes.size(), 9u) << "one write per request";
}

TEST_F(CommonServiceTest, FileContentKeepsTheLastFileReadAfterAFailure) {
    char path[] = "/tmp/vek_unit_XXXXXX";
    const int fd = mkstemp(path);
    ASSERT_EQ(write(fd, "ab\0c", 4), 4);
    close(fd);
    const std::string p = path;

    EXPECT_EQ(serve("AS:1:0:Common:FileContentRequest:0:OK:<" + p + ">:\n"),
              "[AST][INF]onFileContentRequest, self=1, peer=0, fail=0, rawDataLength=0\n"
              "[AST][INF]Success to open file:" +
                  p + ", length=4.\n");
    EXPECT_EQ(response(),
              "AS:1:0:Common:FileContentResponse:4:OK:<" + p + ">:\n" + std::string("ab\0c", 4));
    EXPECT_EQ(serve("AS:2:0:Common:FileContentRequest:0:OK:</nope>:\n"),
              "[AST][INF]onFileContentRequest, self=2, peer=0, fail=0, rawDataLength=0\n"
              "[AST][INF]Fail to open file:/nope, error(2):No such file or directory.\n");
    EXPECT_EQ(response(), "AS:2:0:Common:FileContentResponse:0:OK:</nope>:\n");

    unlink(path);
    char empty[] = "/tmp/vek_unit_XXXXXX";
    close(mkstemp(empty));
    serve(std::string("AS:3:0:Common:FileContentRequest:0:OK:<") + empty + ">:\n");
    EXPECT_EQ(response(), std::string("AS:3:0:Common:FileContentResponse:0:OK:<") + empty + ">:\n");
    unlink(empty);
}

TEST_F(CommonServiceTest, BypassGoesThroughOneAppPerRequest) {
    EXPECT_EQ(serve("AS:9:0:Common:SetBypassRequest:0:OK:<1>:\n"),
              "[AST][INF]onSetBypassRequest, self=9, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to set bypass, ret=0, enable=1.\n");
    EXPECT_EQ(response(), "AS:1:0:Common:SetBypassResponse:0:OK:\n");
    EXPECT_TRUE(AudioSim::bypass());
    EXPECT_EQ(serve("AS:10:0:Common:GetBypassRequest:0:OK:\n"),
              "[AST][INF]onGetBypassRequest, self=10, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to get bypass, ret=0, enable=1.\n");
    EXPECT_EQ(response(), "AS:2:0:Common:GetBypassResponse:0:OK:<1>:\n");
    serve("AS:11:0:Common:SetBypassRequest:0:OK:<2>:\n");
    EXPECT_FALSE(AudioSim::bypass());
    EXPECT_EQ(AudioSim::calls(),
              (std::vector<std::string>{"enableBypass", "getBypass", "disableBypass"}));
}

TEST_F(CommonServiceTest, BypassFailuresAnswerNgWithZeroFields) {
    AudioSim::setBypass(true);
    AudioSim::failAlways("getBypass", 7);
    EXPECT_EQ(serve("AS:1:0:Common:GetBypassRequest:0:OK:\n"),
              "[AST][INF]onGetBypassRequest, self=1, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Fail to get bypass, ret=7, enable=0.\n");
    EXPECT_EQ(response(), "AS:1:0:Common:GetBypassResponse:0:NG:<0>:\n");

    AudioSim::setNullFactory(AudioSim::Object::App, true);
    EXPECT_EQ(serve("AS:2:0:Common:SetBypassRequest:0:OK:<0>:\n"),
              "[AST][INF]onSetBypassRequest, self=2, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Fail to set bypass, ret=-1, enable=0.\n");
    EXPECT_EQ(response(), "AS:2:0:Common:SetBypassResponse:0:NG:\n");
    EXPECT_TRUE(AudioSim::bypass());
}

TEST_F(CommonServiceTest, MalformedRequestsAreNotAnswered) {
    serve("AS:1:0:Common:SetBypassRequest:0:OK:\n");
    serve("AS:1:0:Common:SetBypassRequest:0:OK:<x>:\n");
    serve("AS:1:0:Common:FileContentRequest:0:OK:<>:\n");
    serve("AS:1:0:Common:GetBypassResponse:0:OK:<1>:\n");
    EXPECT_TRUE(transport.writes.empty());
    EXPECT_TRUE(AudioSim::calls().empty());
}

}  // namespace
