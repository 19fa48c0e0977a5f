#pragma once

#include <sstream>

#include "VekCodec.h"
#include "VekEndpoint.h"
#include "VekReverbMasterCallbackItf.h"

namespace vekprotocol {

// Tuning-tool side of Reverb: encodes requests, decodes responses.
class VekReverbMaster : public VekEndpoint<VekReverbMasterCallbackItf> {
public:
    static constexpr const char* kFeature = "Reverb";

    void decode(const VekFields& headerFields, const VekFields& payloadFields,
                std::stringstream& frame, uint32_t rawOffset) override;

    void encodeGetEnableRequest(std::stringstream& out, const VekParamReverbGetEnableRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetModeRequest(std::stringstream& out, const VekParamReverbGetModeRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetModeRequest(std::stringstream& out, const VekParamReverbSetModeRequest& r) {
        vekEncode(out, kFeature, r);
    }
};

}  // namespace vekprotocol
