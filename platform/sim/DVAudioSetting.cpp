// The factories of the simulated library.
#include "DVAudioSetting.h"

#include <new>

#include "SimApp.h"
#include "SimCore.h"
#include "SimSource.h"
#include "SimVolume.h"

namespace {

template <class Simulated>
Simulated* make(AudioSim::Object object) {
    if (!SimCore::instance().admit(object)) {
        return nullptr;
    }
    Simulated* made = new (std::nothrow) Simulated();
    if (made == nullptr) {
        SimCore::instance().released();
    }
    return made;
}

template <class Object>
void release(Object* object) {
    if (object != nullptr) {
        delete object;
        SimCore::instance().released();
    }
}

}  // namespace

namespace audio {

DVAudioSetting::App* DVAudioSetting::createApp() {
    return make<SimApp>(AudioSim::Object::App);
}

DVAudioSetting::Volume* DVAudioSetting::createVolume() {
    return make<SimVolume>(AudioSim::Object::Volume);
}

DVAudioSetting::Source* DVAudioSetting::createSource() {
    return make<SimSource>(AudioSim::Object::Source);
}

void DVAudioSetting::destroy(App* app) {
    release(app);
}
void DVAudioSetting::destroy(Volume* volume) {
    release(volume);
}
void DVAudioSetting::destroy(Source* source) {
    release(source);
}

}  // namespace audio
