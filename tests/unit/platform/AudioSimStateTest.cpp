#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "PlatformTestSupport.h"

using audio::DVAudioSetting;

namespace {

TEST_F(SimTest, DefaultsAreDocumented) {
    EXPECT_FALSE(AudioSim::bypass());
    EXPECT_EQ(AudioSim::masterGain(), 0.0f);
    EXPECT_EQ(AudioSim::channelGain(4), 0.0f);
    EXPECT_EQ(AudioSim::fadeBalance(), (std::array<int32_t, 3>{{0, 0, 15}}));
    EXPECT_EQ(AudioSim::speakerEnable(), 0x3Fu);
    EXPECT_EQ(AudioSim::speakerDelay(1), 0.0f);
    EXPECT_EQ(AudioSim::reverbMode(), 0);
    for (const char* effect : {"equalizer", "hfe", "vb"}) {
        EXPECT_TRUE(AudioSim::effectPresent(effect)) << effect;
        EXPECT_FALSE(AudioSim::effectEnabled(effect)) << effect;
    }
    EXPECT_FALSE(AudioSim::effectPresent("reverb"));
}

// What the library sets, the library and the control interface read back.
TEST_F(SimTest, VolumeRoundTrips) {
    DVAudioSetting::Volume* v = DVAudioSetting::createVolume();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->setMasterGain(-12.5f), 0);
    EXPECT_EQ(v->setChannelGain(4, -3.0f), 0);
    EXPECT_EQ(v->setChannelGain(32, 1.5f), 0);
    EXPECT_EQ(v->setFadeBalance(2, -1, 15), 0);
    float master = 0, ls = 0, l1 = 0, lf = 7;
    EXPECT_EQ(v->getMasterGain(&master), 0);
    EXPECT_EQ(v->getChannelGain(4, &ls), 0);
    EXPECT_EQ(v->getChannelGain(32, &l1), 0);
    EXPECT_EQ(v->getChannelGain(1, &lf), 0);
    DVAudioSetting::destroy(v);

    EXPECT_EQ(master, -12.5f);
    EXPECT_EQ(ls, -3.0f);
    EXPECT_EQ(l1, 1.5f);
    EXPECT_EQ(lf, 0.0f) << "a mask never set reads 0";
    EXPECT_EQ(AudioSim::masterGain(), -12.5f);
    EXPECT_EQ(AudioSim::channelGain(4), -3.0f);
    EXPECT_EQ(AudioSim::fadeBalance(), (std::array<int32_t, 3>{{2, -1, 15}}));
    EXPECT_EQ(AudioSim::calls(),
              (std::vector<std::string>{"setMasterGain gain=-12.5", "setChannelGain mask=4 gain=-3",
                                        "setChannelGain mask=32 gain=1.5",
                                        "setFadeBalance first=2 second=-1 third=15",
                                        "getMasterGain", "getChannelGain mask=4",
                                        "getChannelGain mask=32", "getChannelGain mask=1"}));
}

TEST_F(SimTest, AppAndSourceRoundTrips) {
    {
        AppHandle app;
        int bypass = 7;
        EXPECT_EQ(app->enableBypass(), 0);
        EXPECT_EQ(app->getBypass(&bypass), 0);
        EXPECT_EQ(bypass, 1);
        EXPECT_EQ(app->disableBypass(), 0);
        EXPECT_EQ(app->getBypass(&bypass), 0);
        EXPECT_EQ(bypass, 0);
        EXPECT_EQ(app->setReverbMode(3), 0);
        EXPECT_EQ(app->setSpeakerDelay(8, 2.25f), 0);
        float delay = 0;
        EXPECT_EQ(app->getSpeakerDelay(8, &delay), 0);
        EXPECT_EQ(delay, 2.25f);
    }
    DVAudioSetting::Source* source = DVAudioSetting::createSource();
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(source->setSpeakerEnable(37), 0);
    uint32_t mask = 0;
    EXPECT_EQ(source->getSpeakerEnable(&mask), 0);
    EXPECT_EQ(mask, 37u);
    EXPECT_EQ(source->setStylePattern(8, 1), 0);
    EXPECT_EQ(source->setSinePattern(8, 1499), 0);
    DVAudioSetting::destroy(source);

    EXPECT_EQ(AudioSim::reverbMode(), 3);
    EXPECT_EQ(AudioSim::speakerDelay(8), 2.25f);
    EXPECT_EQ(AudioSim::speakerEnable(), 37u);
    const std::vector<std::string> calls = AudioSim::calls();
    EXPECT_EQ(std::vector<std::string>(calls.end() - 4, calls.end()),
              (std::vector<std::string>{"setSpeakerEnable mask=37", "getSpeakerEnable",
                                        "setStylePattern mask=8 style=1",
                                        "setSinePattern mask=8 value=1499"}));
}

// Values set through the control interface are what the library reports.
TEST_F(SimTest, ControlInterfaceSetsWhatTheLibraryReads) {
    AudioSim::setBypass(true);
    AudioSim::setMasterGain(-6);
    AudioSim::setChannelGain(16, -1);
    AudioSim::setSpeakerEnable(0x3D);
    AudioSim::setSpeakerDelay(2, 0.5f);
    AudioSim::setEffectEnabled("hfe", true);

    AppHandle app;
    int bypass = 0;
    float delay = 0;
    bool hfe = false;
    EXPECT_EQ(app->getBypass(&bypass), 0);
    EXPECT_EQ(app->getSpeakerDelay(2, &delay), 0);
    EXPECT_EQ(app->getEffectEnable("frontApp", "hfe", &hfe), 0);
    EXPECT_EQ(bypass, 1);
    EXPECT_EQ(delay, 0.5f);
    EXPECT_TRUE(hfe);

    DVAudioSetting::Volume* v = DVAudioSetting::createVolume();
    float master = 0, cf = 0;
    EXPECT_EQ(v->getMasterGain(&master), 0);
    EXPECT_EQ(v->getChannelGain(16, &cf), 0);
    DVAudioSetting::destroy(v);
    EXPECT_EQ(master, -6.0f);
    EXPECT_EQ(cf, -1.0f);
    DVAudioSetting::Source* s = DVAudioSetting::createSource();
    uint32_t mask = 0;
    EXPECT_EQ(s->getSpeakerEnable(&mask), 0);
    DVAudioSetting::destroy(s);
    EXPECT_EQ(mask, 0x3Du);
}

TEST_F(SimTest, EffectSwitchesAndAddressing) {
    AppHandle app;
    bool on = false;
    EXPECT_EQ(app->setEffectEnable("frontApp", "vb", true), 0);
    EXPECT_EQ(app->getEffectEnable("frontApp", "vb", &on), 0);
    EXPECT_TRUE(on);
    EXPECT_TRUE(AudioSim::effectEnabled("vb"));
    EXPECT_FALSE(AudioSim::effectEnabled("hfe"));

    struct Case {
        const char* app;
        const char* effect;
    };
    const Case refused[] = {{"rearApp", "vb"},
                            {"frontApp", "reverb"},
                            {"frontapp", "vb"},
                            {nullptr, "vb"},
                            {"frontApp", nullptr}};
    for (const Case& c : refused) {
        uint8_t buffer[148] = {};
        on = true;
        EXPECT_EQ(app->setEffectEnable(c.app, c.effect, false), -2);
        EXPECT_EQ(app->getEffectEnable(c.app, c.effect, &on), -2);
        EXPECT_EQ(app->setEffectParam(c.app, c.effect, buffer), -2);
        EXPECT_EQ(app->getEffectParam(c.app, c.effect, buffer), -2);
        EXPECT_TRUE(on) << "a refused call writes nothing";
    }
    EXPECT_TRUE(AudioSim::effectEnabled("vb"));

    AudioSim::setEffectPresent("vb", false);
    EXPECT_EQ(app->getEffectEnable("frontApp", "vb", &on), -2);
    AudioSim::setEffectPresent("vb", true);
    EXPECT_EQ(app->getEffectEnable("frontApp", "vb", &on), 0);
    EXPECT_EQ(AudioSim::calls().back(), "getEffectEnable app=frontApp effect=vb");
}

TEST_F(SimTest, NullOutputPointersAreRefused) {
    AppHandle app;
    EXPECT_EQ(app->getBypass(nullptr), -22);
    EXPECT_EQ(app->getSpeakerDelay(1, nullptr), -22);
    EXPECT_EQ(app->getEffectEnable("frontApp", "hfe", nullptr), -22);
    EXPECT_EQ(app->getEffectParam("frontApp", "hfe", nullptr), -22);
    EXPECT_EQ(app->setEffectParam("frontApp", "hfe", nullptr), -22);
    EXPECT_EQ(AudioSim::calls().back(), "setEffectParam app=frontApp effect=hfe param=(null)");
}

TEST_F(SimTest, ResetRestoresDefaultsButKeepsCountingObjects) {
    AudioSim::setMasterGain(3);
    AudioSim::failAlways("getBypass", 9);
    AudioSim::setNullFactory(AudioSim::Object::Volume, true);
    DVAudioSetting::App* app = DVAudioSetting::createApp();
    EXPECT_EQ(AudioSim::liveObjects(), 1);
    AudioSim::reset();
    EXPECT_EQ(AudioSim::masterGain(), 0.0f);
    EXPECT_TRUE(AudioSim::calls().empty());
    int bypass = 0;
    EXPECT_EQ(app->getBypass(&bypass), 0);
    EXPECT_EQ(AudioSim::liveObjects(), 1);
    DVAudioSetting::Volume* v = DVAudioSetting::createVolume();
    EXPECT_NE(v, nullptr);
    DVAudioSetting::destroy(v);
    DVAudioSetting::destroy(app);
}

}  // namespace
