#include "VekEqV2Master.h"

#include "VekDecoder.h"

namespace vekprotocol {

void VekEqV2Master::decode(const VekFields& headerFields, const VekFields& payloadFields,
                           std::stringstream& frame, uint32_t rawOffset) {
    using Itf = VekEqV2MasterCallbackItf;
    VekDecoder d(headerFields, payloadFields, frame, rawOffset);
    d.route(callback, &Itf::onGetEnableResponse) || d.route(callback, &Itf::onSetEnableResponse) ||
        d.route(callback, &Itf::onGetBandCountResponse) ||
        d.route(callback, &Itf::onSetBandCountResponse) ||
        d.route(callback, &Itf::onGetBandConfigResponse) ||
        d.route(callback, &Itf::onSetBandConfigResponse);
}

}  // namespace vekprotocol
