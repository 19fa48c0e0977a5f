#pragma once

#include <sstream>

#include "VekCodec.h"
#include "VekEndpoint.h"
#include "VekVbMasterCallbackItf.h"

namespace vekprotocol {

// Tuning-tool side of Vb: encodes requests, decodes responses.
class VekVbMaster : public VekEndpoint<VekVbMasterCallbackItf> {
public:
    static constexpr const char* kFeature = "Vb";

    void decode(const VekFields& headerFields, const VekFields& payloadFields,
                std::stringstream& frame, uint32_t rawOffset) override;

    void encodeGetEnableRequest(std::stringstream& out, const VekParamVbGetEnableRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetEnableRequest(std::stringstream& out, const VekParamVbSetEnableRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetChannelConfigRequest(std::stringstream& out,
                                       const VekParamVbGetChannelConfigRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetChannelConfigRequest(std::stringstream& out,
                                       const VekParamVbSetChannelConfigRequest& r) {
        vekEncode(out, kFeature, r);
    }
};

}  // namespace vekprotocol
