#include "VekPlatformSpeaker.h"

#include "ChannelTable.h"
#include "VekChannelLoop.h"
#include "VekLibrary.h"

namespace vekserver {

using namespace vekprotocol;
using App = VekLibrary::App;
using Source = VekLibrary::Source;

namespace {

// A sine request at exactly 1500 plays the library's style pattern 1 instead.
constexpr int32_t kStyleToneFrequency = 1500;
constexpr int32_t kStyleToneStyle = 1;

}  // namespace

void VekPlatformSpeaker::packGetEnableResponse(VekParamSpeakerGetEnableRequest&,
                                               VekParamSpeakerGetEnableResponse& response) {
    VekLibrary::begin(response, hub_);
    uint32_t mask = 0;
    const int32_t status =
        VekLibrary::with<Source>([&](Source& source) { return source.getSpeakerEnable(&mask); });
    if (status == 0) {
        // Bits above the six speakers are not ours to report.
        for (uint32_t i = 0; i < ChannelTable::kCount; ++i) {
            response.enable[i] = ((mask >> i) & 1u) != 0;
        }
    }
    VekLibrary::finish(response, "get speaker enable", status);
}

void VekPlatformSpeaker::packSetEnableResponse(VekParamSpeakerSetEnableRequest& request,
                                               VekParamSpeakerSetEnableResponse& response) {
    VekLibrary::begin(response, hub_);
    uint32_t mask = 0;
    for (uint32_t i = 0; i < ChannelTable::kCount; ++i) {
        mask |= (request.enable[i] ? 1u : 0u) << i;
    }
    const int32_t status =
        VekLibrary::with<Source>([&](Source& source) { return source.setSpeakerEnable(mask); });
    VekLibrary::finish(response, "set speaker enable", status);
}

void VekPlatformSpeaker::packGetDelayResponse(VekParamSpeakerGetDelayRequest&,
                                              VekParamSpeakerGetDelayResponse& response) {
    VekLibrary::begin(response, hub_);
    const int32_t status = VekChannelLoop::readEach(&App::getSpeakerDelay, response.delay);
    VekLibrary::finish(response, "get speaker delay", status);
}

void VekPlatformSpeaker::packSetDelayResponse(VekParamSpeakerSetDelayRequest& request,
                                              VekParamSpeakerSetDelayResponse& response) {
    VekLibrary::begin(response, hub_);
    const int32_t status = VekChannelLoop::writeEach(&App::setSpeakerDelay, request.delay);
    VekLibrary::finish(response, "set speaker delay", status);
}

void VekPlatformSpeaker::packSetStylePatternResponse(
    VekParamSpeakerSetStylePatternRequest& request,
    VekParamSpeakerSetStylePatternResponse& response) {
    VekLibrary::begin(response, hub_);
    const uint32_t mask = channelMask(request.channel);
    const int32_t status = VekLibrary::with<Source>(
        [&](Source& source) { return source.setStylePattern(mask, request.style); });
    VekLibrary::finish(response, "set speaker style pattern", status);
}

void VekPlatformSpeaker::packSetSinePatternResponse(
    VekParamSpeakerSetSinePatternRequest& request,
    VekParamSpeakerSetSinePatternResponse& response) {
    VekLibrary::begin(response, hub_);
    const uint32_t mask = channelMask(request.channel);
    const int32_t status = VekLibrary::with<Source>([&](Source& source) {
        return request.frequency == kStyleToneFrequency
                   ? source.setStylePattern(mask, kStyleToneStyle)
                   : source.setSinePattern(mask, request.frequency);
    });
    VekLibrary::finish(response, "set speaker sine pattern", status);
}

}  // namespace vekserver
