#pragma once

#include <sstream>

#include "VekCodec.h"
#include "VekEndpoint.h"
#include "VekEqMasterCallbackItf.h"

namespace vekprotocol {

// Tuning-tool side of Eq: encodes requests, decodes responses.
class VekEqMaster : public VekEndpoint<VekEqMasterCallbackItf> {
public:
    static constexpr const char* kFeature = "Eq";

    void decode(const VekFields& headerFields, const VekFields& payloadFields,
                std::stringstream& frame, uint32_t rawOffset) override;

    void encodeGetEnableRequest(std::stringstream& out, const VekParamEqGetEnableRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetEnableRequest(std::stringstream& out, const VekParamEqSetEnableRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetBandCountRequest(std::stringstream& out, const VekParamEqGetBandCountRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetBandConfigRequest(std::stringstream& out,
                                    const VekParamEqGetBandConfigRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetBandConfigRequest(std::stringstream& out,
                                    const VekParamEqSetBandConfigRequest& r) {
        vekEncode(out, kFeature, r);
    }
};

}  // namespace vekprotocol
