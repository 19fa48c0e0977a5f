#include "VekGainSlaveCallbackImpl.h"

namespace vekserver {

using namespace vekprotocol;
using P = VekPlatformGain;
using S = VekGainSlave;

void VekGainSlaveCallbackImpl::onGetMasterRequest(VekParamGainGetMasterRequest& request) {
    serve(__func__, request, &P::packGetMasterResponse, &S::encodeGetMasterResponse);
}

void VekGainSlaveCallbackImpl::onSetMasterRequest(VekParamGainSetMasterRequest& request) {
    serve(__func__, request, &P::packSetMasterResponse, &S::encodeSetMasterResponse);
}

void VekGainSlaveCallbackImpl::onGetChannelRequest(VekParamGainGetChannelRequest& request) {
    serve(__func__, request, &P::packGetChannelResponse, &S::encodeGetChannelResponse);
}

void VekGainSlaveCallbackImpl::onSetChannelRequest(VekParamGainSetChannelRequest& request) {
    serve(__func__, request, &P::packSetChannelResponse, &S::encodeSetChannelResponse);
}

void VekGainSlaveCallbackImpl::onGetFadeBalanceRequest(VekParamGainGetFadeBalanceRequest& request) {
    serve(__func__, request, &P::packGetFadeBalanceResponse, &S::encodeGetFadeBalanceResponse);
}

void VekGainSlaveCallbackImpl::onSetFadeBalanceRequest(VekParamGainSetFadeBalanceRequest& request) {
    serve(__func__, request, &P::packSetFadeBalanceResponse, &S::encodeSetFadeBalanceResponse);
}

}  // namespace vekserver
