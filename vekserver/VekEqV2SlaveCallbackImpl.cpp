#include "VekEqV2SlaveCallbackImpl.h"

namespace vekserver {

using namespace vekprotocol;
using P = VekPlatformEqV2;
using S = VekEqV2Slave;

void VekEqV2SlaveCallbackImpl::onGetEnableRequest(VekParamEqV2GetEnableRequest& request) {
    serve(__func__, request, &P::packGetEnableResponse, &S::encodeGetEnableResponse);
}

void VekEqV2SlaveCallbackImpl::onSetEnableRequest(VekParamEqV2SetEnableRequest& request) {
    serve(__func__, request, &P::packSetEnableResponse, &S::encodeSetEnableResponse);
}

void VekEqV2SlaveCallbackImpl::onGetBandCountRequest(VekParamEqV2GetBandCountRequest& request) {
    serve(__func__, request, &P::packGetBandCountResponse, &S::encodeGetBandCountResponse);
}

void VekEqV2SlaveCallbackImpl::onSetBandCountRequest(VekParamEqV2SetBandCountRequest& request) {
    serve(__func__, request, &P::packSetBandCountResponse, &S::encodeSetBandCountResponse);
}

void VekEqV2SlaveCallbackImpl::onGetBandConfigRequest(VekParamEqV2GetBandConfigRequest& request) {
    serve(__func__, request, &P::packGetBandConfigResponse, &S::encodeGetBandConfigResponse);
}

void VekEqV2SlaveCallbackImpl::onSetBandConfigRequest(VekParamEqV2SetBandConfigRequest& request) {
    serve(__func__, request, &P::packSetBandConfigResponse, &S::encodeSetBandConfigResponse);
}

}  // namespace vekserver
