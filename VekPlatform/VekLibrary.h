#pragma once

#include <cstdint>

#include "DVAudioSetting.h"
#include "VekFrameHub.h"
#include "VekLog.h"

namespace vekserver {

// The frame every adapter operation shares: a zeroed, numbered response; one library
// object per call, always handed back; a "[AST][ZIP]" result line; fail = status != 0.
class VekLibrary {
public:
    using App = audio::DVAudioSetting::App;
    using Volume = audio::DVAudioSetting::Volume;
    using Source = audio::DVAudioSetting::Source;

    static constexpr const char* kFrontApp = "frontApp";

    // Zeroes the whole response and gives it the next response number.
    template <class Response>
    static void begin(Response& response, vekprotocol::VekFrameHub* hub) {
        response = Response{};
        response.self = hub->nextSequence();
    }

    // Creates an Object, runs call(object) on it (status -1 when the factory gives
    // none) and destroys it, null or not.
    template <class Object, class Call>
    static int32_t with(Call&& call) {
        Object* object = create(static_cast<Object*>(nullptr));
        const int32_t status = (object != nullptr) ? call(*object) : -1;
        audio::DVAudioSetting::destroy(object);
        return status;
    }

    static const char* outcome(int32_t status) { return status == 0 ? "Success" : "Fail"; }

    // "[AST][ZIP]Success to <action>, ret=0.\n"
    static void report(const char* action, int32_t status) {
        VekLog::zip("%s to %s, ret=%d.\n", outcome(status), action, status);
    }

    template <class Response>
    static void finish(Response& response, const char* action, int32_t status) {
        report(action, status);
        response.fail = (status != 0);
    }

private:
    static App* create(App*) { return audio::DVAudioSetting::createApp(); }
    static Volume* create(Volume*) { return audio::DVAudioSetting::createVolume(); }
    static Source* create(Source*) { return audio::DVAudioSetting::createSource(); }
};

}  // namespace vekserver
