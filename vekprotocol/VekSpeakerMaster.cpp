#include "VekSpeakerMaster.h"

#include "VekDecoder.h"

namespace vekprotocol {

void VekSpeakerMaster::decode(const VekFields& headerFields, const VekFields& payloadFields,
                              std::stringstream& frame, uint32_t rawOffset) {
    using Itf = VekSpeakerMasterCallbackItf;
    VekDecoder d(headerFields, payloadFields, frame, rawOffset);
    d.route(callback, &Itf::onGetEnableResponse) || d.route(callback, &Itf::onSetEnableResponse) ||
        d.route(callback, &Itf::onGetDelayResponse) ||
        d.route(callback, &Itf::onSetDelayResponse) ||
        d.route(callback, &Itf::onSetStylePatternResponse) ||
        d.route(callback, &Itf::onSetSinePatternResponse);
}

}  // namespace vekprotocol
