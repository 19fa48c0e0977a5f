#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "AppHandle.h"
#include "SimTest.h"

using audio::DVAudioSetting;

namespace {

int32_t getBypassStatus() {
    AppHandle app;
    int on = 0;
    return app->getBypass(&on);
}

int32_t setChannelGainStatus() {
    DVAudioSetting::Volume* v = DVAudioSetting::createVolume();
    const int32_t status = v->setChannelGain(1, 2.0f);
    DVAudioSetting::destroy(v);
    return status;
}

TEST_F(SimTest, SetupItemsTakeEffect) {
    EXPECT_TRUE(AudioSim::reset(" absent = hfe ;on=equalizer,vb;; null=Source;"
                                "fail=getBypass:-5,setChannelGain: +7 ;")
                    .empty());
    AppHandle app;
    bool on = false;
    EXPECT_EQ(app->getEffectEnable("frontApp", "hfe", &on), -2);
    EXPECT_EQ(app->getEffectEnable("rearApp", "vb", &on), -2) << "only frontApp has effects";
    EXPECT_TRUE(AudioSim::effectEnabled("equalizer") && AudioSim::effectEnabled("vb"));
    DVAudioSetting::Source* source = DVAudioSetting::createSource();
    EXPECT_EQ(source, nullptr);
    DVAudioSetting::destroy(source);
    EXPECT_EQ(getBypassStatus(), -5);
    EXPECT_EQ(getBypassStatus(), -5) << "every call";
    EXPECT_EQ(setChannelGainStatus(), 7);
    EXPECT_EQ(AudioSim::channelGain(1), 0.0f) << "a failed call changes nothing";
}

TEST_F(SimTest, MalformedSetupItemsAreReportedAndIgnoredWhole) {
    const std::pair<const char*, const char*> cases[] = {
        {"absent", "no '='"},
        {"gone=hfe", "unknown key 'gone' (absent, on, null or fail)"},
        {"absent=hfe,reverb", "unknown effect 'reverb'"},
        {"absent=hfe,,vb", "empty name in the list"},
        {"null=app", "unknown object 'app' (App, Volume or Source)"},
        {"fail=getBypass", "'getBypass' is not OPERATION:STATUS"},
        {"fail=getbypass:-1", "unknown operation 'getbypass'"},
        {"fail=getBypass:-1x", "status '-1x' is not a 32-bit integer"},
        {"fail=getBypass:2147483648", "status '2147483648' is not a 32-bit integer"},
        {"fail=getBypass:0", "status 0 is success, not a failure"},
        {"fail=setChannelGain:4,getBypass:x", "status 'x' is not a 32-bit integer"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first);
        const std::string expected =
            std::string("audiosim: ignored set-up item '") + c.first + "': " + c.second;
        testing::internal::CaptureStderr();
        const std::vector<std::string> reports = AudioSim::reset(std::string(c.first) + ";on=vb");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), expected + "\n");
        EXPECT_EQ(reports, std::vector<std::string>{expected});
        // Not even the item's good elements apply; the next item does.
        EXPECT_TRUE(AudioSim::effectPresent("hfe"));
        EXPECT_EQ(getBypassStatus(), 0);
        EXPECT_EQ(setChannelGainStatus(), 0);
        EXPECT_TRUE(AudioSim::effectEnabled("vb"));
    }
}

TEST_F(SimTest, EnvironmentIsReadOnceAtTheFirstFactoryCall) {
    setenv("AUDIO_SETTING_SIM", "absent=vb;fail=getBypass:-9", 1);
    AudioSim::resetFromEnvironment();
    EXPECT_TRUE(AudioSim::effectPresent("vb")) << "not read before a factory call";
    EXPECT_EQ(getBypassStatus(), -9);
    EXPECT_FALSE(AudioSim::effectPresent("vb"));
    setenv("AUDIO_SETTING_SIM", "fail=getBypass:-8", 1);
    EXPECT_EQ(getBypassStatus(), -9) << "read once only";
    unsetenv("AUDIO_SETTING_SIM");
}

TEST_F(SimTest, LiveObjectsAreCountedAcrossAReset) {
    DVAudioSetting::App* app = DVAudioSetting::createApp();
    DVAudioSetting::Source* source = DVAudioSetting::createSource();
    EXPECT_EQ(AudioSim::liveObjects(), 2);
    DVAudioSetting::destroy(source);
    DVAudioSetting::destroy(static_cast<DVAudioSetting::Volume*>(nullptr));
    AudioSim::setNullFactory(AudioSim::Object::Volume, true);
    EXPECT_EQ(DVAudioSetting::createVolume(), nullptr);
    EXPECT_EQ(AudioSim::liveObjects(), 1) << "neither a destroyed object nor a null counts";

    AudioSim::reset();
    EXPECT_EQ(AudioSim::liveObjects(), 1) << "objects made before a reset still count";
    DVAudioSetting::Volume* v = DVAudioSetting::createVolume();
    EXPECT_NE(v, nullptr);
    DVAudioSetting::destroy(v);
    DVAudioSetting::destroy(app);
    EXPECT_TRUE(AudioSim::calls().empty()) << "factories are not library operations";
}

// The daemon's gain loop: masks 1 to 32 in turn.
std::vector<int32_t> setSixGains(float gain) {
    std::vector<int32_t> statuses;
    DVAudioSetting::Volume* v = DVAudioSetting::createVolume();
    for (uint32_t i = 0; i < 6; ++i) {
        statuses.push_back(v->setChannelGain(1u << i, gain));
    }
    DVAudioSetting::destroy(v);
    return statuses;
}

TEST_F(SimTest, KthCallFailsOnceAndBeatsMaskWhichBeatsAlways) {
    AudioSim::failOn("setChannelGain", -7, 3);
    EXPECT_EQ(setSixGains(2.0f), (std::vector<int32_t>{0, 0, -7, 0, 0, 0}));
    EXPECT_EQ(AudioSim::channelGain(4), 0.0f) << "the failed call changed nothing";
    EXPECT_EQ(setSixGains(1.0f), (std::vector<int32_t>{0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(AudioSim::calls().size(), 12u) << "failed calls are logged too";

    AudioSim::failOn("setChannelGain", 1, 1);
    AudioSim::failOn("setChannelGain", 2, 2);  // both count from now
    AudioSim::failForMask("setChannelGain", 16, 3);
    EXPECT_EQ(setSixGains(1.0f), (std::vector<int32_t>{1, 2, 0, 0, 3, 0}));
    AudioSim::failAlways("setChannelGain", 4);
    AudioSim::failOn("setChannelGain", 5, 2);
    EXPECT_EQ(setSixGains(1.0f), (std::vector<int32_t>{4, 5, 4, 4, 3, 4}));
}

// A typo in a test's failure set-up must not pass silently.
TEST(SimMisuseDeathTest, UnknownOperationNamesAbort) {
    EXPECT_DEATH(AudioSim::failAlways("getChanelGain", 1), "no library operation 'getChanelGain'");
    EXPECT_DEATH(AudioSim::failForMask("createApp", 1, 1), "no library operation 'createApp'");
    EXPECT_DEATH(AudioSim::failOn("getBypass", 1, 0), "counted from 1");
}

}  // namespace
