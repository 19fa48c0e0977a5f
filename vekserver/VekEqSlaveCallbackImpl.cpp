#include "VekEqSlaveCallbackImpl.h"

namespace vekserver {

using namespace vekprotocol;
using P = VekPlatformEq;
using S = VekEqSlave;

void VekEqSlaveCallbackImpl::onGetEnableRequest(VekParamEqGetEnableRequest& request) {
    serve(__func__, request, &P::packGetEnableResponse, &S::encodeGetEnableResponse);
}

void VekEqSlaveCallbackImpl::onSetEnableRequest(VekParamEqSetEnableRequest& request) {
    serve(__func__, request, &P::packSetEnableResponse, &S::encodeSetEnableResponse);
}

void VekEqSlaveCallbackImpl::onGetBandCountRequest(VekParamEqGetBandCountRequest& request) {
    serve(__func__, request, &P::packGetBandCountResponse, &S::encodeGetBandCountResponse);
}

void VekEqSlaveCallbackImpl::onGetBandConfigRequest(VekParamEqGetBandConfigRequest& request) {
    serve(__func__, request, &P::packGetBandConfigResponse, &S::encodeGetBandConfigResponse);
}

void VekEqSlaveCallbackImpl::onSetBandConfigRequest(VekParamEqSetBandConfigRequest& request) {
    serve(__func__, request, &P::packSetBandConfigResponse, &S::encodeSetBandConfigResponse);
}

}  // namespace vekserver
