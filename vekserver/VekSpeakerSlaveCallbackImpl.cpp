#include "VekSpeakerSlaveCallbackImpl.h"

namespace vekserver {

using namespace vekprotocol;
using P = VekPlatformSpeaker;
using S = VekSpeakerSlave;

void VekSpeakerSlaveCallbackImpl::onGetEnableRequest(VekParamSpeakerGetEnableRequest& request) {
    serve(__func__, request, &P::packGetEnableResponse, &S::encodeGetEnableResponse);
}

void VekSpeakerSlaveCallbackImpl::onSetEnableRequest(VekParamSpeakerSetEnableRequest& request) {
    serve(__func__, request, &P::packSetEnableResponse, &S::encodeSetEnableResponse);
}

void VekSpeakerSlaveCallbackImpl::onGetDelayRequest(VekParamSpeakerGetDelayRequest& request) {
    serve(__func__, request, &P::packGetDelayResponse, &S::encodeGetDelayResponse);
}

void VekSpeakerSlaveCallbackImpl::onSetDelayRequest(VekParamSpeakerSetDelayRequest& request) {
    serve(__func__, request, &P::packSetDelayResponse, &S::encodeSetDelayResponse);
}

void VekSpeakerSlaveCallbackImpl::onSetStylePatternRequest(
    VekParamSpeakerSetStylePatternRequest& request) {
    serve(__func__, request, &P::packSetStylePatternResponse, &S::encodeSetStylePatternResponse);
}

void VekSpeakerSlaveCallbackImpl::onSetSinePatternRequest(
    VekParamSpeakerSetSinePatternRequest& request) {
    serve(__func__, request, &P::packSetSinePatternResponse, &S::encodeSetSinePatternResponse);
}

}  // namespace vekserver
