#pragma once

#include "DVAudioSetting.h"

// An App for one test, destroyed at scope end.
struct AppHandle {
    audio::DVAudioSetting::App* app = audio::DVAudioSetting::createApp();
    ~AppHandle() { audio::DVAudioSetting::destroy(app); }
    audio::DVAudioSetting::App* operator->() const { return app; }
};
