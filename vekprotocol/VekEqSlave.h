#pragma once

#include <sstream>

#include "VekCodec.h"
#include "VekEndpoint.h"
#include "VekEqSlaveCallbackItf.h"

namespace vekprotocol {

// Device side of Eq: decodes requests, encodes responses.
class VekEqSlave : public VekEndpoint<VekEqSlaveCallbackItf> {
public:
    static constexpr const char* kFeature = "Eq";

    void decode(const VekFields& headerFields, const VekFields& payloadFields,
                std::stringstream& frame, uint32_t rawOffset) override;

    void encodeGetEnableResponse(std::stringstream& out, const VekParamEqGetEnableResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetEnableResponse(std::stringstream& out, const VekParamEqSetEnableResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetBandCountResponse(std::stringstream& out,
                                    const VekParamEqGetBandCountResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetBandConfigResponse(std::stringstream& out,
                                     const VekParamEqGetBandConfigResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetBandConfigResponse(std::stringstream& out,
                                     const VekParamEqSetBandConfigResponse& r) {
        vekEncode(out, kFeature, r);
    }
};

}  // namespace vekprotocol
