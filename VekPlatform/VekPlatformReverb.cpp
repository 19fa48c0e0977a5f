#include "VekPlatformReverb.h"

#include "VekLibrary.h"

namespace vekserver {

using namespace vekprotocol;
using App = VekLibrary::App;

// Reverb counts as usable when the library accepts mode 0. This probe is silent and
// leaves lastReverbMode_ alone: it is not a mode change the master asked for.
void VekPlatformReverb::packGetEnableResponse(VekParamReverbGetEnableRequest&,
                                              VekParamReverbGetEnableResponse& response) {
    VekLibrary::begin(response, hub_);
    const int32_t status = VekLibrary::with<App>([](App& app) { return app.setReverbMode(0); });
    response.enable = (status == 0);
}

void VekPlatformReverb::packGetModeResponse(VekParamReverbGetModeRequest&,
                                            VekParamReverbGetModeResponse& response) {
    VekLibrary::begin(response, hub_);
    response.mode = lastReverbMode_;
}

void VekPlatformReverb::packSetModeResponse(VekParamReverbSetModeRequest& request,
                                            VekParamReverbSetModeResponse& response) {
    VekLibrary::begin(response, hub_);
    const int32_t status =
        VekLibrary::with<App>([&](App& app) { return app.setReverbMode(request.mode); });
    VekLibrary::finish(response, "set reverb mode", status);
    if (status == 0) {
        lastReverbMode_ = request.mode;
    }
}

}  // namespace vekserver
