#pragma once

#include <sstream>

#include "VekCodec.h"
#include "VekEndpoint.h"
#include "VekEqV2MasterCallbackItf.h"

namespace vekprotocol {

// Tuning-tool side of EqV2: encodes requests, decodes responses.
class VekEqV2Master : public VekEndpoint<VekEqV2MasterCallbackItf> {
public:
    static constexpr const char* kFeature = "EqV2";

    void decode(const VekFields& headerFields, const VekFields& payloadFields,
                std::stringstream& frame, uint32_t rawOffset) override;

    void encodeGetEnableRequest(std::stringstream& out, const VekParamEqV2GetEnableRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetEnableRequest(std::stringstream& out, const VekParamEqV2SetEnableRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetBandCountRequest(std::stringstream& out,
                                   const VekParamEqV2GetBandCountRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetBandCountRequest(std::stringstream& out,
                                   const VekParamEqV2SetBandCountRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetBandConfigRequest(std::stringstream& out,
                                    const VekParamEqV2GetBandConfigRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetBandConfigRequest(std::stringstream& out,
                                    const VekParamEqV2SetBandConfigRequest& r) {
        vekEncode(out, kFeature, r);
    }
};

}  // namespace vekprotocol
