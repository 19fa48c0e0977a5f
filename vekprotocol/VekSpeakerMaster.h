#pragma once

#include <sstream>

#include "VekCodec.h"
#include "VekEndpoint.h"
#include "VekSpeakerMasterCallbackItf.h"

namespace vekprotocol {

// Tuning-tool side of Speaker: encodes requests, decodes responses.
class VekSpeakerMaster : public VekEndpoint<VekSpeakerMasterCallbackItf> {
public:
    static constexpr const char* kFeature = "Speaker";

    void decode(const VekFields& headerFields, const VekFields& payloadFields,
                std::stringstream& frame, uint32_t rawOffset) override;

    void encodeGetEnableRequest(std::stringstream& out, const VekParamSpeakerGetEnableRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetEnableRequest(std::stringstream& out, const VekParamSpeakerSetEnableRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetDelayRequest(std::stringstream& out, const VekParamSpeakerGetDelayRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetDelayRequest(std::stringstream& out, const VekParamSpeakerSetDelayRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetStylePatternRequest(std::stringstream& out,
                                      const VekParamSpeakerSetStylePatternRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetSinePatternRequest(std::stringstream& out,
                                     const VekParamSpeakerSetSinePatternRequest& r) {
        vekEncode(out, kFeature, r);
    }
};

}  // namespace vekprotocol
