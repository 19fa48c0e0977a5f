#include "VekVbSlaveCallbackImpl.h"

namespace vekserver {

using namespace vekprotocol;
using P = VekPlatformVb;
using S = VekVbSlave;

void VekVbSlaveCallbackImpl::onGetEnableRequest(VekParamVbGetEnableRequest& request) {
    serve(__func__, request, &P::packGetEnableResponse, &S::encodeGetEnableResponse);
}

void VekVbSlaveCallbackImpl::onSetEnableRequest(VekParamVbSetEnableRequest& request) {
    serve(__func__, request, &P::packSetEnableResponse, &S::encodeSetEnableResponse);
}

void VekVbSlaveCallbackImpl::onGetChannelConfigRequest(VekParamVbGetChannelConfigRequest& request) {
    serve(__func__, request, &P::packGetChannelConfigResponse, &S::encodeGetChannelConfigResponse);
}

void VekVbSlaveCallbackImpl::onSetChannelConfigRequest(VekParamVbSetChannelConfigRequest& request) {
    serve(__func__, request, &P::packSetChannelConfigResponse, &S::encodeSetChannelConfigResponse);
}

}  // namespace vekserver
