#pragma once

#include <sstream>

#include "VekCodec.h"
#include "VekCommonSlaveCallbackItf.h"
#include "VekEndpoint.h"

namespace vekprotocol {

// Device side of Common: decodes requests, encodes responses.
class VekCommonSlave : public VekEndpoint<VekCommonSlaveCallbackItf> {
public:
    static constexpr const char* kFeature = "Common";

    void decode(const VekFields& headerFields, const VekFields& payloadFields,
                std::stringstream& frame, uint32_t rawOffset) override;

    void encodeVersionResponse(std::stringstream& out, const VekParamCommonVersionResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeFeatureResponse(std::stringstream& out, const VekParamCommonFeatureResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeFileListResponse(std::stringstream& out, const VekParamCommonFileListResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeFileContentResponse(std::stringstream& out,
                                   const VekParamCommonFileContentResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetBypassResponse(std::stringstream& out, const VekParamCommonGetBypassResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetBypassResponse(std::stringstream& out, const VekParamCommonSetBypassResponse& r) {
        vekEncode(out, kFeature, r);
    }
};

}  // namespace vekprotocol
