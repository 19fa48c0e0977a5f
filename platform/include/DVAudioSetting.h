#pragma once

#include <cstdint>

namespace audio {

// The device's audio settings library as the daemon uses it. Every operation returns
// 0 on success and anything else on failure. Factories may return null; destroy
// accepts null.
class DVAudioSetting {
  public:
    class App {
      public:
        virtual ~App() = default;
        virtual int32_t setSpeakerDelay(uint32_t channelMask, float delay) = 0;
        virtual int32_t getSpeakerDelay(uint32_t channelMask, float* delay) = 0;
        virtual int32_t enableBypass() = 0;
        virtual int32_t disableBypass() = 0;
        virtual int32_t getBypass(int* enable) = 0;
        virtual int32_t setReverbMode(int32_t mode) = 0;
        virtual int32_t setEffectEnable(const char* app, const char* effect, bool enable) = 0;
        virtual int32_t getEffectEnable(const char* app, const char* effect, bool* enable) = 0;
        // param: a little-endian parameter buffer (totalLength, then records).
        virtual int32_t setEffectParam(const char* app, const char* effect, uint8_t* param) = 0;
        // The buffer carries the query in and the records out, in place.
        virtual int32_t getEffectParam(const char* app, const char* effect, uint8_t* param) = 0;
    };

    class Volume {
      public:
        virtual ~Volume() = default;
        virtual int32_t setMasterGain(float gain) = 0;
        virtual int32_t getMasterGain(float* gain) = 0;
        virtual int32_t setChannelGain(uint32_t channelMask, float gain) = 0;
        virtual int32_t getChannelGain(uint32_t channelMask, float* gain) = 0;
        virtual int32_t setFadeBalance(int32_t first, int32_t second, int32_t third) = 0;
    };

    class Source {
      public:
        virtual ~Source() = default;
        virtual int32_t setStylePattern(uint32_t channelMask, int32_t style) = 0;
        virtual int32_t setSinePattern(uint32_t channelMask, int32_t value) = 0;
        virtual int32_t setSpeakerEnable(uint32_t speakerMask) = 0;
        virtual int32_t getSpeakerEnable(uint32_t* speakerMask) = 0;
    };

    static App* createApp();
    static Volume* createVolume();
    static Source* createSource();
    static void destroy(App* app);
    static void destroy(Volume* volume);
    static void destroy(Source* source);
};

}  // namespace audio
