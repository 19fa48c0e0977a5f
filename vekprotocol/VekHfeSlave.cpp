#include "VekHfeSlave.h"

#include "VekDecoder.h"

namespace vekprotocol {

void VekHfeSlave::decode(const VekFields& headerFields, const VekFields& payloadFields,
                         std::stringstream& frame, uint32_t rawOffset) {
    using Itf = VekHfeSlaveCallbackItf;
    VekDecoder d(headerFields, payloadFields, frame, rawOffset);
    d.route(callback, &Itf::onGetEnableRequest) || d.route(callback, &Itf::onSetEnableRequest) ||
        d.route(callback, &Itf::onGetChannelConfigRequest) ||
        d.route(callback, &Itf::onSetChannelConfigRequest);
}

}  // namespace vekprotocol
