#include "VekHfeSlaveCallbackImpl.h"

namespace vekserver {

using namespace vekprotocol;
using P = VekPlatformHfe;
using S = VekHfeSlave;

void VekHfeSlaveCallbackImpl::onGetEnableRequest(VekParamHfeGetEnableRequest& request) {
    serve(__func__, request, &P::packGetEnableResponse, &S::encodeGetEnableResponse);
}

void VekHfeSlaveCallbackImpl::onSetEnableRequest(VekParamHfeSetEnableRequest& request) {
    serve(__func__, request, &P::packSetEnableResponse, &S::encodeSetEnableResponse);
}

void VekHfeSlaveCallbackImpl::onGetChannelConfigRequest(
    VekParamHfeGetChannelConfigRequest& request) {
    serve(__func__, request, &P::packGetChannelConfigResponse, &S::encodeGetChannelConfigResponse);
}

void VekHfeSlaveCallbackImpl::onSetChannelConfigRequest(
    VekParamHfeSetChannelConfigRequest& request) {
    serve(__func__, request, &P::packSetChannelConfigResponse, &S::encodeSetChannelConfigResponse);
}

}  // namespace vekserver
