#pragma once

#include <sstream>

#include "VekCodec.h"
#include "VekEndpoint.h"
#include "VekEqV2SlaveCallbackItf.h"

namespace vekprotocol {

// Device side of EqV2: decodes requests, encodes responses.
class VekEqV2Slave : public VekEndpoint<VekEqV2SlaveCallbackItf> {
public:
    static constexpr const char* kFeature = "EqV2";

    void decode(const VekFields& headerFields, const VekFields& payloadFields,
                std::stringstream& frame, uint32_t rawOffset) override;

    void encodeGetEnableResponse(std::stringstream& out, const VekParamEqV2GetEnableResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetEnableResponse(std::stringstream& out, const VekParamEqV2SetEnableResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetBandCountResponse(std::stringstream& out,
                                    const VekParamEqV2GetBandCountResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetBandCountResponse(std::stringstream& out,
                                    const VekParamEqV2SetBandCountResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetBandConfigResponse(std::stringstream& out,
                                     const VekParamEqV2GetBandConfigResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetBandConfigResponse(std::stringstream& out,
                                     const VekParamEqV2SetBandConfigResponse& r) {
        vekEncode(out, kFeature, r);
    }
};

}  // namespace vekprotocol
