#pragma once

#include <sstream>

#include "VekCodec.h"
#include "VekEndpoint.h"
#include "VekVbSlaveCallbackItf.h"

namespace vekprotocol {

// Device side of Vb: decodes requests, encodes responses.
class VekVbSlave : public VekEndpoint<VekVbSlaveCallbackItf> {
public:
    static constexpr const char* kFeature = "Vb";

    void decode(const VekFields& headerFields, const VekFields& payloadFields,
                std::stringstream& frame, uint32_t rawOffset) override;

    void encodeGetEnableResponse(std::stringstream& out, const VekParamVbGetEnableResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetEnableResponse(std::stringstream& out, const VekParamVbSetEnableResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetChannelConfigResponse(std::stringstream& out,
                                        const VekParamVbGetChannelConfigResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetChannelConfigResponse(std::stringstream& out,
                                        const VekParamVbSetChannelConfigResponse& r) {
        vekEncode(out, kFeature, r);
    }
};

}  // namespace vekprotocol
