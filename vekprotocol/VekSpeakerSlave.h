#pragma once

#include <sstream>

#include "VekCodec.h"
#include "VekEndpoint.h"
#include "VekSpeakerSlaveCallbackItf.h"

namespace vekprotocol {

// Device side of Speaker: decodes requests, encodes responses.
class VekSpeakerSlave : public VekEndpoint<VekSpeakerSlaveCallbackItf> {
public:
    static constexpr const char* kFeature = "Speaker";

    void decode(const VekFields& headerFields, const VekFields& payloadFields,
                std::stringstream& frame, uint32_t rawOffset) override;

    void encodeGetEnableResponse(std::stringstream& out,
                                 const VekParamSpeakerGetEnableResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetEnableResponse(std::stringstream& out,
                                 const VekParamSpeakerSetEnableResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetDelayResponse(std::stringstream& out, const VekParamSpeakerGetDelayResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetDelayResponse(std::stringstream& out, const VekParamSpeakerSetDelayResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetStylePatternResponse(std::stringstream& out,
                                       const VekParamSpeakerSetStylePatternResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetSinePatternResponse(std::stringstream& out,
                                      const VekParamSpeakerSetSinePatternResponse& r) {
        vekEncode(out, kFeature, r);
    }
};

}  // namespace vekprotocol
