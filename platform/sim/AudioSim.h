#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

// Control of the simulated audio settings library, for tests. Everything here and
// every library call share one mutex, so a test may look at the state from its own
// thread while (or after) the daemon's thread used the library.
//
// Defaults (reset): bypass off; master gain 0; channel gains and speaker delays 0
// for every mask; fade/balance 0, 0, 15; speaker enable mask 0x3F (all six on);
// reverb mode 0; effects "equalizer", "hfe" and "vb" of "frontApp" present and off;
// no stored effect parameters; no failures, no null factories, empty logs.
// A process that never resets (the daemon), or resets with resetFromEnvironment,
// starts instead from a plausibly tuned device (SimFactory.h): gains, delays, band
// counts and bands with values; the set-up string is applied over it.
//
// Statuses the simulator gives by itself: -2 for an effect call on an application
// other than "frontApp" or an effect that is unknown or absent; -22 for a null
// pointer or a malformed parameter buffer. Everything else succeeds unless a
// failure is injected.
//
// Set-up string (the environment variable AUDIO_SETTING_SIM, read at the first
// factory call after process start or after resetFromEnvironment, or the argument
// of reset): items separated by ';', each one of
//   absent=NAME[,NAME...]          effects "frontApp" does not have
//   on=NAME[,NAME...]              present effects switched on at start
//   null=App|Volume|Source[,...]   factories that return null
//   fail=OPERATION:STATUS[,...]    every call of the operation returns STATUS
//                                  (non-zero) and changes nothing
// A malformed item is reported in one line on standard error and ignored whole.
class AudioSim {
public:
    enum class Object { App, Volume, Source };

    // A parameter buffer as setEffectParam or getEffectParam saw it on entry:
    // 4 + totalLength bytes (at most 6796).
    struct ParamCall {
        std::string operation;  // "setEffectParam" or "getEffectParam"
        std::string app;
        std::string effect;
        std::vector<uint8_t> bytes;
    };

    struct ParamRecord {
        uint16_t paramId;
        std::vector<uint8_t> body;
    };

    // The values of one equaliser band entry (28 bytes in the band record).
    struct EqBand {
        int32_t value1 = 0;
        uint16_t value2 = 0;
        float value3 = 0;
        float value4 = 0;
        int32_t value5 = 0;
        int32_t value6 = 0;
        bool operator==(const EqBand& o) const;
    };

    // Back to the defaults, then the set-up string applied; gives the reports of
    // the items it ignored (also written to standard error). The environment is not
    // read afterwards. Live objects are still counted.
    static std::vector<std::string> reset(const std::string& setup = "");
    // Back to the defaults; AUDIO_SETTING_SIM is read again at the next factory call.
    static void resetFromEnvironment();

    static bool bypass();
    static void setBypass(bool on);
    static float masterGain();
    static void setMasterGain(float gain);
    static float channelGain(uint32_t mask);
    static void setChannelGain(uint32_t mask, float gain);
    static std::array<int32_t, 3> fadeBalance();
    static void setFadeBalance(int32_t first, int32_t second, int32_t third);
    static uint32_t speakerEnable();
    static void setSpeakerEnable(uint32_t mask);
    static float speakerDelay(uint32_t mask);
    static void setSpeakerDelay(uint32_t mask, float delay);
    static int32_t reverbMode();
    static void setReverbMode(int32_t mode);

    // Effects of "frontApp". Making an unknown name present adds that effect.
    static bool effectPresent(const std::string& effect);
    static void setEffectPresent(const std::string& effect, bool present);
    static bool effectEnabled(const std::string& effect);
    static void setEffectEnabled(const std::string& effect, bool on);

    // Stored effect parameters; what was never set reads as zeros.
    static int32_t eqBandCount(uint32_t mask);
    static void setEqBandCount(uint32_t mask, int32_t count);
    static EqBand eqBand(uint32_t mask, uint32_t band);
    static void setEqBand(uint32_t mask, uint32_t band, const EqBand& values);
    // The body of a record kept per mask (hfe and vb paramId 0), as last set;
    // empty when never set. The body starts with the mask.
    static std::vector<uint8_t> effectRecord(const std::string& effect, uint32_t mask,
                                             uint16_t paramId = 0);
    static void setEffectRecord(const std::string& effect, uint32_t mask, std::vector<uint8_t> body,
                                uint16_t paramId = 0);

    // Failure injection; operations by method name ("getChannelGain"). An unknown
    // name aborts the test, so a typo cannot pass silently. A failing
    // call returns status, writes nothing and changes nothing.
    static void failAlways(const std::string& operation, int32_t status);
    // Only the nthCall-th call from now on (1: the next one).
    static void failOn(const std::string& operation, int32_t status, unsigned nthCall = 1);
    // Every call whose channel mask argument is mask (the operations that take one:
    // speaker delays, channel gains, patterns, setSpeakerEnable).
    static void failForMask(const std::string& operation, uint32_t mask, int32_t status);
    static void setNullFactory(Object object, bool returnsNull);

    // One line per library operation call, failed ones included, in call order, as
    // "setChannelGain mask=4 gain=-3" (floats in %g). Factories and destroy are not
    // logged; see liveObjects. Both logs are kept only from the first reset or
    // resetFromEnvironment on: a process that never calls either (the daemon) keeps none.
    static std::vector<std::string> calls();
    static std::vector<ParamCall> paramCalls();
    static void clearCalls();

    // Objects made by the factories and not yet destroyed.
    static int liveObjects();

    // The next getEffectParam call that reaches an effect returns status and, when
    // image is not empty, writes image over the buffer from offset 0 instead of the
    // stored answer. Queued: each call takes the oldest script. An image larger than
    // the buffer the daemon uses for that query is not written (-22 and a report).
    static void scriptGetEffectParam(int32_t status, std::vector<uint8_t> image = {});
    // A buffer image: totalLength, then the records.
    static std::vector<uint8_t> paramBuffer(const std::vector<ParamRecord>& records);
};
