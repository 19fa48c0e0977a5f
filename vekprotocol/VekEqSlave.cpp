#include "VekEqSlave.h"

#include "VekDecoder.h"

namespace vekprotocol {

void VekEqSlave::decode(const VekFields& headerFields, const VekFields& payloadFields,
                        std::stringstream& frame, uint32_t rawOffset) {
    using Itf = VekEqSlaveCallbackItf;
    VekDecoder d(headerFields, payloadFields, frame, rawOffset);
    d.route(callback, &Itf::onGetEnableRequest) || d.route(callback, &Itf::onSetEnableRequest) ||
        d.route(callback, &Itf::onGetBandCountRequest) ||
        d.route(callback, &Itf::onGetBandConfigRequest) ||
        d.route(callback, &Itf::onSetBandConfigRequest);
}

}  // namespace vekprotocol
