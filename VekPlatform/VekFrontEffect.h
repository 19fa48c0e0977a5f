#pragma once

#include <cstdint>

#include "VekFrameHub.h"
#include "VekLibrary.h"
#include "VekParamBuffer.h"

namespace vekserver {

// An effect of the front application ("equalizer", "hfe", "vb"): its switch and its
// parameter calls, each through an App of its own.
class VekFrontEffect {
public:
    // The library writes the state straight into the response's enable.
    template <class Response>
    static void packGetEnable(vekprotocol::VekFrameHub* hub, const char* effect, const char* action,
                              Response& response) {
        VekLibrary::begin(response, hub);
        const int32_t status = VekLibrary::with<VekLibrary::App>([&](VekLibrary::App& app) {
            return app.getEffectEnable(VekLibrary::kFrontApp, effect, &response.enable);
        });
        VekLibrary::finish(response, action, status);
    }

    template <class Response>
    static void packSetEnable(vekprotocol::VekFrameHub* hub, const char* effect, const char* action,
                              bool enable, Response& response) {
        VekLibrary::begin(response, hub);
        const int32_t status = VekLibrary::with<VekLibrary::App>([&](VekLibrary::App& app) {
            return app.setEffectEnable(VekLibrary::kFrontApp, effect, enable);
        });
        VekLibrary::finish(response, action, status);
    }

    static int32_t setParam(const char* effect, VekParamBuffer& buffer);
    static int32_t getParam(const char* effect, VekParamBuffer& buffer);

    // Copies the body of every record the library left over image, at most size
    // bytes each, so the last record wins; gives the number of records.
    static uint32_t readBack(const VekParamBuffer& buffer, uint8_t* image, uint32_t size);
};

}  // namespace vekserver
