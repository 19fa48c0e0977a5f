#include "VekEqV2Slave.h"

#include "VekDecoder.h"

namespace vekprotocol {

void VekEqV2Slave::decode(const VekFields& headerFields, const VekFields& payloadFields,
                          std::stringstream& frame, uint32_t rawOffset) {
    using Itf = VekEqV2SlaveCallbackItf;
    VekDecoder d(headerFields, payloadFields, frame, rawOffset);
    d.route(callback, &Itf::onGetEnableRequest) || d.route(callback, &Itf::onSetEnableRequest) ||
        d.route(callback, &Itf::onGetBandCountRequest) ||
        d.route(callback, &Itf::onSetBandCountRequest) ||
        d.route(callback, &Itf::onGetBandConfigRequest) ||
        d.route(callback, &Itf::onSetBandConfigRequest);
}

}  // namespace vekprotocol
