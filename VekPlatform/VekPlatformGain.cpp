#include "VekPlatformGain.h"

#include "VekChannelLoop.h"
#include "VekLibrary.h"

namespace vekserver {

using namespace vekprotocol;
using Volume = VekLibrary::Volume;

void VekPlatformGain::packGetMasterResponse(VekParamGainGetMasterRequest&,
                                            VekParamGainGetMasterResponse& response) {
    VekLibrary::begin(response, hub_);
    const int32_t status = VekLibrary::with<Volume>(
        [&](Volume& volume) { return volume.getMasterGain(&response.masterGain); });
    VekLibrary::finish(response, "get master gain", status);
}

void VekPlatformGain::packSetMasterResponse(VekParamGainSetMasterRequest& request,
                                            VekParamGainSetMasterResponse& response) {
    VekLibrary::begin(response, hub_);
    const int32_t status = VekLibrary::with<Volume>(
        [&](Volume& volume) { return volume.setMasterGain(request.masterGain); });
    VekLibrary::finish(response, "set master gain", status);
}

void VekPlatformGain::packGetChannelResponse(VekParamGainGetChannelRequest&,
                                             VekParamGainGetChannelResponse& response) {
    VekLibrary::begin(response, hub_);
    const int32_t status = VekChannelLoop::readEach(&Volume::getChannelGain, response.channelGain);
    VekLibrary::finish(response, "get channel gain", status);
}

void VekPlatformGain::packSetChannelResponse(VekParamGainSetChannelRequest& request,
                                             VekParamGainSetChannelResponse& response) {
    VekLibrary::begin(response, hub_);
    const int32_t status = VekChannelLoop::writeEach(&Volume::setChannelGain, request.channelGain);
    VekLibrary::finish(response, "set channel gain", status);
}

void VekPlatformGain::packGetFadeBalanceResponse(VekParamGainGetFadeBalanceRequest&,
                                                 VekParamGainGetFadeBalanceResponse& response) {
    VekLibrary::begin(response, hub_);
    for (int i = 0; i < 3; ++i) {
        response.fadeBalance[i] = lastFadeBalance_[i];
    }
}

void VekPlatformGain::packSetFadeBalanceResponse(VekParamGainSetFadeBalanceRequest& request,
                                                 VekParamGainSetFadeBalanceResponse& response) {
    VekLibrary::begin(response, hub_);
    const int32_t* values = request.fadeBalance;
    const int32_t status = VekLibrary::with<Volume>(
        [&](Volume& volume) { return volume.setFadeBalance(values[0], values[1], values[2]); });
    VekLibrary::finish(response, "set fade balance", status);
    if (status == 0) {
        for (int i = 0; i < 3; ++i) {
            lastFadeBalance_[i] = values[i];
        }
    }
}

}  // namespace vekserver
