#include "VekCommonSlave.h"

#include "VekDecoder.h"

namespace vekprotocol {

void VekCommonSlave::decode(const VekFields& headerFields, const VekFields& payloadFields,
                            std::stringstream& frame, uint32_t rawOffset) {
    using Itf = VekCommonSlaveCallbackItf;
    VekDecoder d(headerFields, payloadFields, frame, rawOffset);
    d.route(callback, &Itf::onVersionRequest) || d.route(callback, &Itf::onFeatureRequest) ||
        d.route(callback, &Itf::onFileListRequest) ||
        d.route(callback, &Itf::onFileContentRequest) ||
        d.route(callback, &Itf::onGetBypassRequest) || d.route(callback, &Itf::onSetBypassRequest);
}

}  // namespace vekprotocol
