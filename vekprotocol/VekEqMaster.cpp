#include "VekEqMaster.h"

#include "VekDecoder.h"

namespace vekprotocol {

void VekEqMaster::decode(const VekFields& headerFields, const VekFields& payloadFields,
                         std::stringstream& frame, uint32_t rawOffset) {
    using Itf = VekEqMasterCallbackItf;
    VekDecoder d(headerFields, payloadFields, frame, rawOffset);
    d.route(callback, &Itf::onGetEnableResponse) || d.route(callback, &Itf::onSetEnableResponse) ||
        d.route(callback, &Itf::onGetBandCountResponse) ||
        d.route(callback, &Itf::onGetBandConfigResponse) ||
        d.route(callback, &Itf::onSetBandConfigResponse);
}

}  // namespace vekprotocol
