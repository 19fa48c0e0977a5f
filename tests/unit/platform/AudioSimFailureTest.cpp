#include <string>
#include <vector>

#include "PlatformTestSupport.h"

using audio::DVAudioSetting;

namespace {

// The gain loop of the daemon: six channels, stop at the first failure.
std::vector<int32_t> setSixGains(float gain) {
    std::vector<int32_t> statuses;
    DVAudioSetting::Volume* v = DVAudioSetting::createVolume();
    for (uint32_t i = 0; i < 6; ++i) {
        statuses.push_back(v->setChannelGain(1u << i, gain));
    }
    DVAudioSetting::destroy(v);
    return statuses;
}

TEST_F(SimTest, FailOnTheKthCallOnly) {
    AudioSim::failOn("setChannelGain", -7, 3);
    EXPECT_EQ(setSixGains(2.0f), (std::vector<int32_t>{0, 0, -7, 0, 0, 0}));
    EXPECT_EQ(AudioSim::channelGain(2), 2.0f);
    EXPECT_EQ(AudioSim::channelGain(4), 0.0f) << "the failed call changed nothing";
    EXPECT_EQ(AudioSim::channelGain(8), 2.0f);
    EXPECT_EQ(setSixGains(1.0f), (std::vector<int32_t>{0, 0, 0, 0, 0, 0})) << "once";
    EXPECT_EQ(AudioSim::calls().size(), 12u) << "failed calls are logged too";
    EXPECT_EQ(AudioSim::calls()[2], "setChannelGain mask=4 gain=2");
}

TEST_F(SimTest, FailuresCombine) {
    AudioSim::failOn("setChannelGain", 1, 1);  // counted from now: the next call
    AudioSim::failOn("setChannelGain", 2, 2);
    AudioSim::failForMask("setChannelGain", 16, 3);
    EXPECT_EQ(setSixGains(1.0f), (std::vector<int32_t>{1, 2, 0, 0, 3, 0}));
    AudioSim::failAlways("setChannelGain", 4);
    EXPECT_EQ(setSixGains(1.0f), (std::vector<int32_t>{4, 4, 4, 4, 3, 4}))
        << "a mask failure wins over an always failure";
    AudioSim::failOn("setChannelGain", 5, 2);
    EXPECT_EQ(setSixGains(1.0f), (std::vector<int32_t>{4, 5, 4, 4, 3, 4}))
        << "a k-th-call failure wins over both";
}

TEST_F(SimTest, FailForMaskCoversEveryMaskedOperation) {
    const char* const operations[] = {"setSpeakerDelay", "getSpeakerDelay", "setChannelGain",
                                      "getChannelGain",  "setStylePattern", "setSinePattern",
                                      "setSpeakerEnable"};
    for (const char* op : operations) {
        AudioSim::failForMask(op, 8, -8);
    }
    AppHandle app;
    DVAudioSetting::Volume* v = DVAudioSetting::createVolume();
    DVAudioSetting::Source* s = DVAudioSetting::createSource();
    float f = 0;
    for (uint32_t mask : {4u, 8u}) {
        const int32_t expected = mask == 8 ? -8 : 0;
        EXPECT_EQ(app->setSpeakerDelay(mask, 1), expected);
        EXPECT_EQ(app->getSpeakerDelay(mask, &f), expected);
        EXPECT_EQ(v->setChannelGain(mask, 1), expected);
        EXPECT_EQ(v->getChannelGain(mask, &f), expected);
        EXPECT_EQ(s->setStylePattern(mask, 1), expected);
        EXPECT_EQ(s->setSinePattern(mask, 1), expected);
        EXPECT_EQ(s->setSpeakerEnable(mask), expected);
    }
    DVAudioSetting::destroy(v);
    DVAudioSetting::destroy(s);
    EXPECT_EQ(AudioSim::speakerEnable(), 4u);
}

TEST_F(SimTest, FailedCallsWriteNothing) {
    const char* const operations[] = {"getBypass",      "getMasterGain",    "getEffectEnable",
                                      "getEffectParam", "getSpeakerEnable", "getSpeakerDelay"};
    for (const char* op : operations) {
        AudioSim::failAlways(op, 11);
    }
    AudioSim::setBypass(true);
    AudioSim::setEffectEnabled("hfe", true);
    AppHandle app;
    DVAudioSetting::Volume* v = DVAudioSetting::createVolume();
    DVAudioSetting::Source* s = DVAudioSetting::createSource();
    int bypass = 0;
    float f = 0;
    bool on = false;
    uint32_t mask = 0;
    std::vector<uint8_t> buffer = Le::oneRecord(148, 0, 20);
    const std::vector<uint8_t> before = buffer;
    EXPECT_EQ(app->getBypass(&bypass), 11);
    EXPECT_EQ(v->getMasterGain(&f), 11);
    EXPECT_EQ(app->getEffectEnable("frontApp", "hfe", &on), 11);
    EXPECT_EQ(app->getEffectParam("frontApp", "hfe", buffer.data()), 11);
    EXPECT_EQ(s->getSpeakerEnable(&mask), 11);
    EXPECT_EQ(app->getSpeakerDelay(1, &f), 11);
    DVAudioSetting::destroy(v);
    DVAudioSetting::destroy(s);
    EXPECT_EQ(bypass, 0);
    EXPECT_EQ(f, 0.0f);
    EXPECT_FALSE(on);
    EXPECT_EQ(mask, 0u);
    EXPECT_EQ(buffer, before);
}

TEST_F(SimTest, SetOperationsThatFailChangeNothing) {
    const char* const operations[] = {"enableBypass",   "setReverbMode",  "setEffectEnable",
                                      "setEffectParam", "setFadeBalance", "setMasterGain"};
    for (const char* op : operations) {
        AudioSim::failAlways(op, -1);
    }
    AppHandle app;
    std::vector<uint8_t> buffer = Le::oneRecord(148, 0, 20);
    Le::put32(buffer, 8, 1);
    Le::put32(buffer, 12, 1);
    EXPECT_EQ(app->enableBypass(), -1);
    EXPECT_EQ(app->setReverbMode(4), -1);
    EXPECT_EQ(app->setEffectEnable("frontApp", "vb", true), -1);
    EXPECT_EQ(app->setEffectParam("frontApp", "hfe", buffer.data()), -1);
    DVAudioSetting::Volume* v = DVAudioSetting::createVolume();
    EXPECT_EQ(v->setFadeBalance(1, 2, 3), -1);
    EXPECT_EQ(v->setMasterGain(5), -1);
    DVAudioSetting::destroy(v);
    EXPECT_FALSE(AudioSim::bypass());
    EXPECT_EQ(AudioSim::reverbMode(), 0);
    EXPECT_FALSE(AudioSim::effectEnabled("vb"));
    EXPECT_TRUE(AudioSim::effectRecord("hfe", 1).empty());
    EXPECT_EQ(AudioSim::fadeBalance()[0], 0);
    EXPECT_EQ(AudioSim::masterGain(), 0.0f);
    EXPECT_EQ(AudioSim::paramCalls().size(), 1u) << "the buffer is captured even so";
}

TEST(SimMisuseDeathTest, UnknownOperationNamesStopTheTest) {
    EXPECT_DEATH(AudioSim::failAlways("getChanelGain", 1), "no library operation 'getChanelGain'");
    EXPECT_DEATH(AudioSim::failOn("createApp", 1, 1), "no library operation");
    EXPECT_DEATH(AudioSim::failOn("getBypass", 1, 0), "counted from 1");
    EXPECT_DEATH(AudioSim::failForMask("", 1, 1), "no library operation");
}

TEST_F(SimTest, NullFactoriesAndLiveObjects) {
    AudioSim::setNullFactory(AudioSim::Object::Volume, true);
    EXPECT_EQ(DVAudioSetting::createVolume(), nullptr);
    DVAudioSetting::destroy(static_cast<DVAudioSetting::Volume*>(nullptr));
    DVAudioSetting::destroy(static_cast<DVAudioSetting::App*>(nullptr));
    DVAudioSetting::destroy(static_cast<DVAudioSetting::Source*>(nullptr));
    EXPECT_EQ(AudioSim::liveObjects(), 0);

    DVAudioSetting::App* a1 = DVAudioSetting::createApp();
    DVAudioSetting::App* a2 = DVAudioSetting::createApp();
    DVAudioSetting::Source* s = DVAudioSetting::createSource();
    EXPECT_NE(a1, a2);
    EXPECT_EQ(AudioSim::liveObjects(), 3);
    DVAudioSetting::destroy(a1);
    DVAudioSetting::destroy(s);
    EXPECT_EQ(AudioSim::liveObjects(), 1);
    DVAudioSetting::destroy(a2);
    EXPECT_EQ(AudioSim::liveObjects(), 0);

    AudioSim::setNullFactory(AudioSim::Object::Volume, false);
    DVAudioSetting::Volume* v = DVAudioSetting::createVolume();
    EXPECT_NE(v, nullptr);
    DVAudioSetting::destroy(v);
    EXPECT_TRUE(AudioSim::calls().empty()) << "factories are not operations";
}

}  // namespace
