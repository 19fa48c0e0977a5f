#pragma once

#include <sstream>

#include "VekCodec.h"
#include "VekEndpoint.h"
#include "VekReverbSlaveCallbackItf.h"

namespace vekprotocol {

// Device side of Reverb: decodes requests, encodes responses.
class VekReverbSlave : public VekEndpoint<VekReverbSlaveCallbackItf> {
public:
    static constexpr const char* kFeature = "Reverb";

    void decode(const VekFields& headerFields, const VekFields& payloadFields,
                std::stringstream& frame, uint32_t rawOffset) override;

    void encodeGetEnableResponse(std::stringstream& out, const VekParamReverbGetEnableResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetModeResponse(std::stringstream& out, const VekParamReverbGetModeResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetModeResponse(std::stringstream& out, const VekParamReverbSetModeResponse& r) {
        vekEncode(out, kFeature, r);
    }
};

}  // namespace vekprotocol
