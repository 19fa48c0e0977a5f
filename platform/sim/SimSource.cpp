#include "SimSource.h"

#include "SimCore.h"
#include "SimStatus.h"
#include "SimText.h"

int32_t SimSource::setStylePattern(uint32_t channelMask, int32_t style) {
    return SimCore::instance().call(
        "setStylePattern", SimText::format("setStylePattern mask=%u style=%d", channelMask, style),
        &channelMask, [](SimState&) { return SimStatus::kOk; });
}

int32_t SimSource::setSinePattern(uint32_t channelMask, int32_t value) {
    return SimCore::instance().call(
        "setSinePattern", SimText::format("setSinePattern mask=%u value=%d", channelMask, value),
        &channelMask, [](SimState&) { return SimStatus::kOk; });
}

int32_t SimSource::setSpeakerEnable(uint32_t speakerMask) {
    return SimCore::instance().call("setSpeakerEnable",
                                    SimText::format("setSpeakerEnable mask=%u", speakerMask),
                                    &speakerMask, [&](SimState& s) {
                                        s.speakerEnable = speakerMask;
                                        return SimStatus::kOk;
                                    });
}

int32_t SimSource::getSpeakerEnable(uint32_t* speakerMask) {
    return SimCore::instance().call("getSpeakerEnable", "getSpeakerEnable", nullptr,
                                    [&](SimState& s) {
                                        if (speakerMask == nullptr) {
                                            return SimStatus::kInvalid;
                                        }
                                        *speakerMask = s.speakerEnable;
                                        return SimStatus::kOk;
                                    });
}
