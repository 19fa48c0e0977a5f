#include "VekReverbSlave.h"

#include "VekDecoder.h"

namespace vekprotocol {

void VekReverbSlave::decode(const VekFields& headerFields, const VekFields& payloadFields,
                            std::stringstream& frame, uint32_t rawOffset) {
    using Itf = VekReverbSlaveCallbackItf;
    VekDecoder d(headerFields, payloadFields, frame, rawOffset);
    d.route(callback, &Itf::onGetEnableRequest) || d.route(callback, &Itf::onGetModeRequest) ||
        d.route(callback, &Itf::onSetModeRequest);
}

}  // namespace vekprotocol
