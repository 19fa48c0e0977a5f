#include "VekGainMaster.h"

#include "VekDecoder.h"

namespace vekprotocol {

void VekGainMaster::decode(const VekFields& headerFields, const VekFields& payloadFields,
                           std::stringstream& frame, uint32_t rawOffset) {
    using Itf = VekGainMasterCallbackItf;
    VekDecoder d(headerFields, payloadFields, frame, rawOffset);
    d.route(callback, &Itf::onGetMasterResponse) || d.route(callback, &Itf::onSetMasterResponse) ||
        d.route(callback, &Itf::onGetChannelResponse) ||
        d.route(callback, &Itf::onSetChannelResponse) ||
        d.route(callback, &Itf::onGetFadeBalanceResponse) ||
        d.route(callback, &Itf::onSetFadeBalanceResponse);
}

}  // namespace vekprotocol
