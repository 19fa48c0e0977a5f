#include "VekSpeakerSlave.h"

#include "VekDecoder.h"

namespace vekprotocol {

void VekSpeakerSlave::decode(const VekFields& headerFields, const VekFields& payloadFields,
                             std::stringstream& frame, uint32_t rawOffset) {
    using Itf = VekSpeakerSlaveCallbackItf;
    VekDecoder d(headerFields, payloadFields, frame, rawOffset);
    d.route(callback, &Itf::onGetEnableRequest) || d.route(callback, &Itf::onSetEnableRequest) ||
        d.route(callback, &Itf::onGetDelayRequest) || d.route(callback, &Itf::onSetDelayRequest) ||
        d.route(callback, &Itf::onSetStylePatternRequest) ||
        d.route(callback, &Itf::onSetSinePatternRequest);
}

}  // namespace vekprotocol
