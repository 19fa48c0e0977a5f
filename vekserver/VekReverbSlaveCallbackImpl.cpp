#include "VekReverbSlaveCallbackImpl.h"

namespace vekserver {

using namespace vekprotocol;
using P = VekPlatformReverb;
using S = VekReverbSlave;

void VekReverbSlaveCallbackImpl::onGetEnableRequest(VekParamReverbGetEnableRequest& request) {
    serve(__func__, request, &P::packGetEnableResponse, &S::encodeGetEnableResponse);
}

void VekReverbSlaveCallbackImpl::onGetModeRequest(VekParamReverbGetModeRequest& request) {
    serve(__func__, request, &P::packGetModeResponse, &S::encodeGetModeResponse);
}

void VekReverbSlaveCallbackImpl::onSetModeRequest(VekParamReverbSetModeRequest& request) {
    serve(__func__, request, &P::packSetModeResponse, &S::encodeSetModeResponse);
}

}  // namespace vekserver
