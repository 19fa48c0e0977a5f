#include "VekHfeMaster.h"

#include "VekDecoder.h"

namespace vekprotocol {

void VekHfeMaster::decode(const VekFields& headerFields, const VekFields& payloadFields,
                          std::stringstream& frame, uint32_t rawOffset) {
    using Itf = VekHfeMasterCallbackItf;
    VekDecoder d(headerFields, payloadFields, frame, rawOffset);
    d.route(callback, &Itf::onGetEnableResponse) || d.route(callback, &Itf::onSetEnableResponse) ||
        d.route(callback, &Itf::onGetChannelConfigResponse) ||
        d.route(callback, &Itf::onSetChannelConfigResponse);
}

}  // namespace vekprotocol
