#pragma once

#include <sstream>

#include "VekCodec.h"
#include "VekCommonMasterCallbackItf.h"
#include "VekEndpoint.h"

namespace vekprotocol {

// Tuning-tool side of Common: encodes requests, decodes responses.
class VekCommonMaster : public VekEndpoint<VekCommonMasterCallbackItf> {
public:
    static constexpr const char* kFeature = "Common";

    void decode(const VekFields& headerFields, const VekFields& payloadFields,
                std::stringstream& frame, uint32_t rawOffset) override;

    void encodeVersionRequest(std::stringstream& out, const VekParamCommonVersionRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeFeatureRequest(std::stringstream& out, const VekParamCommonFeatureRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeFileListRequest(std::stringstream& out, const VekParamCommonFileListRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeFileContentRequest(std::stringstream& out,
                                  const VekParamCommonFileContentRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetBypassRequest(std::stringstream& out, const VekParamCommonGetBypassRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetBypassRequest(std::stringstream& out, const VekParamCommonSetBypassRequest& r) {
        vekEncode(out, kFeature, r);
    }
};

}  // namespace vekprotocol
