#include "VekFrontEffect.h"

#include <cstring>

namespace vekserver {

using App = VekLibrary::App;

int32_t VekFrontEffect::setParam(const char* effect, VekParamBuffer& buffer) {
    return VekLibrary::with<App>(
        [&](App& app) { return app.setEffectParam(VekLibrary::kFrontApp, effect, buffer.data()); });
}

int32_t VekFrontEffect::getParam(const char* effect, VekParamBuffer& buffer) {
    return VekLibrary::with<App>(
        [&](App& app) { return app.getEffectParam(VekLibrary::kFrontApp, effect, buffer.data()); });
}

uint32_t VekFrontEffect::readBack(const VekParamBuffer& buffer, uint8_t* image, uint32_t size) {
    uint32_t records = 0;
    buffer.forEachRecord([&](const uint8_t* body, uint16_t bodySize) {
        std::memcpy(image, body, bodySize < size ? bodySize : size);
        ++records;
    });
    return records;
}

}  // namespace vekserver
