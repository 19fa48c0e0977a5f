#pragma once

#include <sstream>

#include "VekCodec.h"
#include "VekEndpoint.h"
#include "VekHfeMasterCallbackItf.h"

namespace vekprotocol {

// Tuning-tool side of Hfe: encodes requests, decodes responses.
class VekHfeMaster : public VekEndpoint<VekHfeMasterCallbackItf> {
public:
    static constexpr const char* kFeature = "Hfe";

    void decode(const VekFields& headerFields, const VekFields& payloadFields,
                std::stringstream& frame, uint32_t rawOffset) override;

    void encodeGetEnableRequest(std::stringstream& out, const VekParamHfeGetEnableRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetEnableRequest(std::stringstream& out, const VekParamHfeSetEnableRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetChannelConfigRequest(std::stringstream& out,
                                       const VekParamHfeGetChannelConfigRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetChannelConfigRequest(std::stringstream& out,
                                       const VekParamHfeSetChannelConfigRequest& r) {
        vekEncode(out, kFeature, r);
    }
};

}  // namespace vekprotocol
