#include "VekVbMaster.h"

#include "VekDecoder.h"

namespace vekprotocol {

void VekVbMaster::decode(const VekFields& headerFields, const VekFields& payloadFields,
                         std::stringstream& frame, uint32_t rawOffset) {
    using Itf = VekVbMasterCallbackItf;
    VekDecoder d(headerFields, payloadFields, frame, rawOffset);
    d.route(callback, &Itf::onGetEnableResponse) || d.route(callback, &Itf::onSetEnableResponse) ||
        d.route(callback, &Itf::onGetChannelConfigResponse) ||
        d.route(callback, &Itf::onSetChannelConfigResponse);
}

}  // namespace vekprotocol
