#include "VekCommonSlaveCallbackImpl.h"
#include "VekLog.h"

namespace vekserver {

using namespace vekprotocol;
using P = VekPlatformCommon;
using S = VekCommonSlave;

void VekCommonSlaveCallbackImpl::onVersionRequest(VekParamCommonVersionRequest& request) {
    logRequest(__func__, request, ".\n");
    VekLog::info("Master version=%s, slave version=%s.\n", request.version.c_str(),
                 P::kSlaveVersion);
    respond(request, &P::packVersionResponse, &S::encodeVersionResponse);
}

void VekCommonSlaveCallbackImpl::onFeatureRequest(VekParamCommonFeatureRequest& request) {
    serve(__func__, request, &P::packFeatureResponse, &S::encodeFeatureResponse);
}

void VekCommonSlaveCallbackImpl::onFileListRequest(VekParamCommonFileListRequest& request) {
    serve(__func__, request, &P::packFileListResponse, &S::encodeFileListResponse);
}

void VekCommonSlaveCallbackImpl::onFileContentRequest(VekParamCommonFileContentRequest& request) {
    serve(__func__, request, &P::packFileContentResponse, &S::encodeFileContentResponse);
}

void VekCommonSlaveCallbackImpl::onGetBypassRequest(VekParamCommonGetBypassRequest& request) {
    serve(__func__, request, &P::packGetBypassResponse, &S::encodeGetBypassResponse);
}

void VekCommonSlaveCallbackImpl::onSetBypassRequest(VekParamCommonSetBypassRequest& request) {
    serve(__func__, request, &P::packSetBypassResponse, &S::encodeSetBypassResponse);
}

}  // namespace vekserver
