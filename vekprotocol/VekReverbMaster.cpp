#include "VekReverbMaster.h"

#include "VekDecoder.h"

namespace vekprotocol {

void VekReverbMaster::decode(const VekFields& headerFields, const VekFields& payloadFields,
                             std::stringstream& frame, uint32_t rawOffset) {
    using Itf = VekReverbMasterCallbackItf;
    VekDecoder d(headerFields, payloadFields, frame, rawOffset);
    d.route(callback, &Itf::onGetEnableResponse) || d.route(callback, &Itf::onGetModeResponse) ||
        d.route(callback, &Itf::onSetModeResponse);
}

}  // namespace vekprotocol
