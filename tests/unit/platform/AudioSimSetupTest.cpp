#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "PlatformTestSupport.h"

using audio::DVAudioSetting;

namespace {

struct StatusOf {
    static int32_t getBypass() {
        AppHandle app;
        int on = 0;
        return app.app != nullptr ? app->getBypass(&on) : -100;
    }
    static int32_t setChannelGain() {
        DVAudioSetting::Volume* v = DVAudioSetting::createVolume();
        const int32_t status = v != nullptr ? v->setChannelGain(1, 2.0f) : -100;
        DVAudioSetting::destroy(v);
        return status;
    }
    static int32_t effectEnable(const char* effect, bool* on) {
        AppHandle app;
        return app->getEffectEnable("frontApp", effect, on);
    }
};

TEST_F(SimTest, EachSetupItemKindTakesEffect) {
    struct Case {
        const char* setup;
        std::function<void()> check;
    };
    const Case cases[] = {
        {"absent=hfe",
         [] {
             bool on = false;
             EXPECT_FALSE(AudioSim::effectPresent("hfe"));
             EXPECT_EQ(StatusOf::effectEnable("hfe", &on), -2);
             AppHandle app;
             uint8_t buffer[148] = {};
             EXPECT_EQ(app->setEffectEnable("frontApp", "hfe", true), -2);
             EXPECT_EQ(app->getEffectParam("frontApp", "hfe", buffer), -2);
             EXPECT_EQ(StatusOf::effectEnable("vb", &on), 0);
         }},
        {"absent=hfe,vb;on=equalizer",
         [] {
             bool on = false;
             EXPECT_EQ(StatusOf::effectEnable("vb", &on), -2);
             EXPECT_EQ(StatusOf::effectEnable("equalizer", &on), 0);
             EXPECT_TRUE(on);
         }},
        {"on=hfe,vb",
         [] {
             EXPECT_TRUE(AudioSim::effectEnabled("hfe"));
             EXPECT_TRUE(AudioSim::effectEnabled("vb"));
             EXPECT_FALSE(AudioSim::effectEnabled("equalizer"));
         }},
        {"null=App,Source",
         [] {
             EXPECT_EQ(DVAudioSetting::createApp(), nullptr);
             EXPECT_EQ(DVAudioSetting::createSource(), nullptr);
             DVAudioSetting::Volume* v = DVAudioSetting::createVolume();
             EXPECT_NE(v, nullptr);
             DVAudioSetting::destroy(v);
             EXPECT_EQ(AudioSim::liveObjects(), 0);
         }},
        {"fail=getBypass:-5,setChannelGain:7",
         [] {
             EXPECT_EQ(StatusOf::getBypass(), -5);
             EXPECT_EQ(StatusOf::getBypass(), -5) << "every call";
             EXPECT_EQ(StatusOf::setChannelGain(), 7);
             EXPECT_EQ(AudioSim::channelGain(1), 0.0f) << "a failed call changes nothing";
         }},
        {" fail = getBypass : +3 ; ; on = vb ;",
         [] {
             EXPECT_EQ(StatusOf::getBypass(), 3);
             EXPECT_TRUE(AudioSim::effectEnabled("vb"));
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.setup);
        EXPECT_TRUE(AudioSim::reset(c.setup).empty());
        c.check();
    }
}

TEST_F(SimTest, MalformedSetupItemsAreReportedAndIgnored) {
    struct Case {
        const char* item;
        const char* why;
    };
    const Case cases[] = {
        {"absent", "no '='"},
        {"gone=hfe", "unknown key 'gone' (absent, on, null or fail)"},
        {"absent=hfe,reverb", "unknown effect 'reverb'"},
        {"absent=", "empty name in the list"},
        {"on=hfe,,vb", "empty name in the list"},
        {"null=Widget", "unknown object 'Widget' (App, Volume or Source)"},
        {"null=app", "unknown object 'app' (App, Volume or Source)"},
        {"fail=getBypass", "'getBypass' is not OPERATION:STATUS"},
        {"fail=getbypass:-1", "unknown operation 'getbypass'"},
        {"fail=getBypass:abc", "status 'abc' is not a 32-bit integer"},
        {"fail=getBypass:-1x", "status '-1x' is not a 32-bit integer"},
        {"fail=getBypass:", "status '' is not a 32-bit integer"},
        {"fail=getBypass:2147483648", "status '2147483648' is not a 32-bit integer"},
        {"fail=getBypass:99999999999999999999",
         "status '99999999999999999999' is not a 32-bit integer"},
        {"fail=getBypass:0", "status 0 is success, not a failure"},
        {"fail=setChannelGain:4,getBypass:x", "status 'x' is not a 32-bit integer"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.item);
        const std::string expected =
            std::string("audiosim: ignored set-up item '") + c.item + "': " + c.why;
        testing::internal::CaptureStderr();
        const std::vector<std::string> reports = AudioSim::reset(std::string(c.item) + ";on=vb");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), expected + "\n");
        EXPECT_EQ(reports, std::vector<std::string>{expected});
        // Nothing of the bad item applies, not even its good elements; the next does.
        EXPECT_TRUE(AudioSim::effectPresent("hfe"));
        EXPECT_EQ(StatusOf::getBypass(), 0);
        EXPECT_EQ(StatusOf::setChannelGain(), 0);
        EXPECT_TRUE(AudioSim::effectEnabled("vb"));
    }
}

TEST_F(SimTest, EnvironmentIsReadAtTheFirstFactoryCall) {
    setenv("AUDIO_SETTING_SIM", "absent=vb;fail=getBypass:-9", 1);

    AudioSim::reset();  // an explicit set-up replaces the environment
    EXPECT_EQ(StatusOf::getBypass(), 0);
    EXPECT_TRUE(AudioSim::effectPresent("vb"));

    AudioSim::resetFromEnvironment();
    EXPECT_TRUE(AudioSim::effectPresent("vb")) << "not read before a factory call";
    EXPECT_EQ(StatusOf::getBypass(), -9);
    EXPECT_FALSE(AudioSim::effectPresent("vb"));

    setenv("AUDIO_SETTING_SIM", "", 1);
    EXPECT_EQ(StatusOf::getBypass(), -9) << "read once only";
    unsetenv("AUDIO_SETTING_SIM");
    AudioSim::resetFromEnvironment();
    EXPECT_EQ(StatusOf::getBypass(), 0);
}

}  // namespace
