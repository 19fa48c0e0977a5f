#include "VekGainSlave.h"

#include "VekDecoder.h"

namespace vekprotocol {

void VekGainSlave::decode(const VekFields& headerFields, const VekFields& payloadFields,
                          std::stringstream& frame, uint32_t rawOffset) {
    using Itf = VekGainSlaveCallbackItf;
    VekDecoder d(headerFields, payloadFields, frame, rawOffset);
    d.route(callback, &Itf::onGetMasterRequest) || d.route(callback, &Itf::onSetMasterRequest) ||
        d.route(callback, &Itf::onGetChannelRequest) ||
        d.route(callback, &Itf::onSetChannelRequest) ||
        d.route(callback, &Itf::onGetFadeBalanceRequest) ||
        d.route(callback, &Itf::onSetFadeBalanceRequest);
}

}  // namespace vekprotocol
