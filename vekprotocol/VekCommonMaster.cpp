#include "VekCommonMaster.h"

#include "VekDecoder.h"

namespace vekprotocol {

void VekCommonMaster::decode(const VekFields& headerFields, const VekFields& payloadFields,
                             std::stringstream& frame, uint32_t rawOffset) {
    using Itf = VekCommonMasterCallbackItf;
    VekDecoder d(headerFields, payloadFields, frame, rawOffset);
    d.route(callback, &Itf::onVersionResponse) || d.route(callback, &Itf::onFeatureResponse) ||
        d.route(callback, &Itf::onFileListResponse) ||
        d.route(callback, &Itf::onFileContentResponse) ||
        d.route(callback, &Itf::onGetBypassResponse) ||
        d.route(callback, &Itf::onSetBypassResponse);
}

}  // namespace vekprotocol
