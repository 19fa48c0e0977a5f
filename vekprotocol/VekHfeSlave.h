#pragma once

#include <sstream>

#include "VekCodec.h"
#include "VekEndpoint.h"
#include "VekHfeSlaveCallbackItf.h"

namespace vekprotocol {

// Device side of Hfe: decodes requests, encodes responses.
class VekHfeSlave : public VekEndpoint<VekHfeSlaveCallbackItf> {
public:
    static constexpr const char* kFeature = "Hfe";

    void decode(const VekFields& headerFields, const VekFields& payloadFields,
                std::stringstream& frame, uint32_t rawOffset) override;

    void encodeGetEnableResponse(std::stringstream& out, const VekParamHfeGetEnableResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetEnableResponse(std::stringstream& out, const VekParamHfeSetEnableResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetChannelConfigResponse(std::stringstream& out,
                                        const VekParamHfeGetChannelConfigResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetChannelConfigResponse(std::stringstream& out,
                                        const VekParamHfeSetChannelConfigResponse& r) {
        vekEncode(out, kFeature, r);
    }
};

}  // namespace vekprotocol
